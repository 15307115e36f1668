#include <memory>
#include <tuple>
#include <utility>

#include "platform/Sync.h"
#include "platform/win32/Windows.h"

struct Thread::State {
    HANDLE handle = nullptr;
};

namespace {

/// What the new thread needs; it owns it.
struct StartRecord {
    Thread::Procedure procedure;
    void* argument;
    HMODULE module;
};

/// Adds a reference to this library, which FreeLibraryAndExitThread gives back.
HMODULE AddModuleReference() noexcept {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&AddModuleReference), &module);
    return module;
}

DWORD WINAPI RunThread(void* parameter) {
    // Copied and freed first: FreeLibraryAndExitThread runs no destructors.
    const StartRecord start = *std::unique_ptr<StartRecord>(static_cast<StartRecord*>(parameter));
    const DWORD exitCode = start.procedure(start.argument);
    FreeLibraryAndExitThread(start.module, exitCode);
}

}  // namespace

Thread::Thread() noexcept = default;

Thread::~Thread() { Close(); }

void Thread::Start(Procedure procedure, void* argument) noexcept try {
    Close();
    auto state = std::make_unique<State>();
    auto start = std::make_unique<StartRecord>(StartRecord{procedure, argument, AddModuleReference()});
    DWORD threadId = 0;
    state->handle = CreateThread(nullptr, 0, RunThread, start.get(), 0, &threadId);
    if (state->handle == nullptr) {
        FreeLibrary(start->module);
        return;
    }
    std::ignore = start.release();  // the thread owns it now
    m_pState = std::move(state);
} catch (...) {
    Close();
}

void Thread::Close() noexcept {
    if (m_pState) {
        CloseHandle(m_pState->handle);
        m_pState.reset();
    }
}

bool Thread::IsOpen() const noexcept { return m_pState != nullptr; }
