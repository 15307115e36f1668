#include "platform/Sync.h"

#include <cstdint>
#include <memory>

#include "platform/win32/Windows.h"

struct CriticalSection::State {
    CRITICAL_SECTION section;
};

CriticalSection::CriticalSection() : m_pState(std::make_unique<State>()) {
    InitializeCriticalSection(&m_pState->section);
}

CriticalSection::~CriticalSection() { DeleteCriticalSection(&m_pState->section); }

void CriticalSection::lock() noexcept { EnterCriticalSection(&m_pState->section); }

void CriticalSection::unlock() noexcept { LeaveCriticalSection(&m_pState->section); }

struct ManualResetEvent::State {
    HANDLE event = nullptr;
};

ManualResetEvent::ManualResetEvent() : m_pState(std::make_unique<State>()) {
    m_pState->event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

ManualResetEvent::~ManualResetEvent() { CloseHandle(m_pState->event); }

void ManualResetEvent::Set() noexcept { SetEvent(m_pState->event); }

void ManualResetEvent::Reset() noexcept { ResetEvent(m_pState->event); }

bool ManualResetEvent::Wait(std::uint32_t milliseconds) noexcept {
    return WaitForSingleObject(m_pState->event, milliseconds) == WAIT_OBJECT_0;
}
