#include "platform/Interrupt.h"

#include <windows.h>

#include <atomic>

#include "ExitCode.h"

namespace {

std::atomic<int> g_nInterrupts = 0;

BOOL WINAPI OnConsoleControl(DWORD) {
    if (g_nInterrupts.fetch_add(1) > 0) {
        EndNow(kExitInterrupted);
    }
    return TRUE;
}

}  // namespace

void CatchInterrupts() { SetConsoleCtrlHandler(OnConsoleControl, TRUE); }

bool Interrupted() noexcept { return g_nInterrupts > 0; }

void EndNow(int exitCode) noexcept {
    // Not ExitProcess: it would wait for the library to let go of what the silent call holds.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    for (;;) {
        Sleep(INFINITE);
    }
}
