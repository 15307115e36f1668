#include "platform/Interrupt.h"

#include <windows.h>

#include <atomic>

#include "ExitCode.h"

namespace {

std::atomic<int> g_nInterrupts = 0;
std::atomic<void (*)() noexcept> g_beforeEndNow = nullptr;

void DoBeforeEndNow() noexcept {
    if (auto* const action = g_beforeEndNow.exchange(nullptr)) {
        action();
    }
}

BOOL WINAPI OnConsoleControl(DWORD control) {
    if (g_nInterrupts.fetch_add(1) > 0) {
        EndNow(kExitInterrupted);
    }
    if (control != CTRL_C_EVENT && control != CTRL_BREAK_EVENT) {
        // A closed console: the system ends the program once this returns, and after five seconds anyway. Until then
        // the watch may close its device.
        constexpr DWORD kPatienceMs = 4'000;
        Sleep(kPatienceMs);
        DoBeforeEndNow();
    }
    return TRUE;
}

}  // namespace

void CatchInterrupts() { SetConsoleCtrlHandler(OnConsoleControl, TRUE); }

bool Interrupted() noexcept { return g_nInterrupts > 0; }

void BeforeEndNow(void (*action)() noexcept) noexcept { g_beforeEndNow = action; }

void EndNow(int exitCode) noexcept {
    DoBeforeEndNow();
    // Not ExitProcess: it would wait for the library to let go of what the silent call holds.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    for (;;) {
        Sleep(INFINITE);
    }
}
