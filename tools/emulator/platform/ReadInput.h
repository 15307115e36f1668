#pragma once

#include <cstddef>

namespace emulator {

/// Waits for bytes of the standard input, a pipe, a file or a console, and takes at most `size` of them into `buffer`.
/// Gives how many; 0 at its end, or where there is none.
std::size_t ReadInput(char* buffer, std::size_t size);

}  // namespace emulator
