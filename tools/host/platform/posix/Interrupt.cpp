#include "platform/Interrupt.h"

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <tuple>

#include "ExitCode.h"

namespace {

std::atomic<int> g_nInterrupts = 0;
std::atomic<void (*)() noexcept> g_beforeEndNow = nullptr;
static_assert(std::atomic<int>::is_always_lock_free);  // a signal handler may take no lock

void OnSignal(int) {
    if (g_nInterrupts.fetch_add(1) > 0) {
        EndNow(kExitInterrupted);
    }
}

}  // namespace

void CatchInterrupts() {
    std::ignore = std::signal(SIGINT, OnSignal);
    std::ignore = std::signal(SIGTERM, OnSignal);
    std::ignore = std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is an error of the write
}

bool Interrupted() noexcept { return g_nInterrupts > 0; }

void BeforeEndNow(void (*action)() noexcept) noexcept { g_beforeEndNow = action; }

void EndNow(int exitCode) noexcept {
    if (auto* const action = g_beforeEndNow.exchange(nullptr)) {
        action();
    }
    _exit(exitCode);
}
