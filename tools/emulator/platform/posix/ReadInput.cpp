#include "platform/ReadInput.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace emulator {

std::size_t ReadInput(char* buffer, std::size_t size) {
    ssize_t length = 0;
    do {
        length = ::read(STDIN_FILENO, buffer, size);
    } while (length < 0 && errno == EINTR);
    return length > 0 ? static_cast<std::size_t>(length) : 0;
}

}  // namespace emulator
