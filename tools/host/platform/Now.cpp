#include "platform/Now.h"

#include <chrono>

#include "model/Moment.h"

Moment Now() {
    using std::chrono::duration;
    static const auto start = std::chrono::steady_clock::now();
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return {std::chrono::duration_cast<std::chrono::milliseconds>(sinceEpoch).count(),
            duration<double>(std::chrono::steady_clock::now() - start).count()};
}
