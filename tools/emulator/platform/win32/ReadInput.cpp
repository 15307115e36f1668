#include "platform/ReadInput.h"

#include <windows.h>

#include <cstddef>

namespace emulator {

std::size_t ReadInput(char* buffer, std::size_t size) {
    DWORD length = 0;
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    return ReadFile(input, buffer, static_cast<DWORD>(size), &length, nullptr) != FALSE ? length : 0;
}

}  // namespace emulator
