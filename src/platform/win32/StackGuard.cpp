// What GCC's guarded stacks want: the guard, and what ends the process when it was overwritten. GCC's own library for
// them draws the guard from a cryptography provider, which it loads while the loader is at work on this library: that
// is not safe, and a load took forty times as long.

#ifdef __GNUC__

#include <bit>
#include <cstdint>
#include <initializer_list>

#include "platform/FailFast.h"
#include "platform/win32/Windows.h"

// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming): the compiler's names
extern "C" {

/// As the file has it, until it is drawn.
std::uintptr_t __stack_chk_guard = 0x2B99'2DDF'A232;

[[noreturn]] void __stack_chk_fail() { FailFast(); }
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)

namespace {

/// Before all other constructors, and itself without a guard: the guard changes while it runs. It differs with each
/// load: it comes of the times, the process and of where the loader and the system put the library and the stack.
__attribute__((constructor(101), no_stack_protector)) void DrawGuard() noexcept {
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    std::uint64_t guard = __builtin_ia32_rdtsc();
    for (const std::uint64_t part :
         {std::bit_cast<std::uint64_t>(counter), std::bit_cast<std::uint64_t>(time),
          std::uint64_t{GetCurrentProcessId()} << 32 | GetCurrentThreadId(), reinterpret_cast<std::uint64_t>(&time),
          reinterpret_cast<std::uint64_t>(&__stack_chk_guard)}) {
        guard = std::rotl((guard ^ part) * 0x9E37'79B9'7F4A'7C15, 31);
    }
    constexpr std::uint64_t kEndOfText = 0xFF;  // a zero in its lowest byte stops the overrun of a text at the guard
    __stack_chk_guard = guard & ~kEndOfText;
}

}  // namespace

#endif
