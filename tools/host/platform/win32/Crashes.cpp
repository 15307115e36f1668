#include "platform/Crashes.h"

#include <windows.h>

#include <cstddef>
#include <optional>

namespace {

LONG WINAPI EndAtOnce(EXCEPTION_POINTERS* exception) {
    TerminateProcess(GetCurrentProcess(), exception->ExceptionRecord->ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void CrashInSilence() noexcept {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    SetUnhandledExceptionFilter(EndAtOnce);
}

std::optional<std::size_t> OpenHandles() {
    DWORD count = 0;
    return GetProcessHandleCount(GetCurrentProcess(), &count) != FALSE ? std::optional<std::size_t>(count)
                                                                       : std::nullopt;
}
