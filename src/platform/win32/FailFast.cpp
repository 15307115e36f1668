#include "platform/FailFast.h"

#include "platform/win32/Windows.h"

void FailFast() noexcept {
    RaiseFailFastException(nullptr, nullptr, 0);
    TerminateProcess(GetCurrentProcess(), 3);  // should fail-fast ever return
    for (;;) {
    }
}
