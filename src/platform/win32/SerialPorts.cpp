#include "platform/SerialPorts.h"

#include "platform/win32/Windows.h"

bool HasDefaultPortConfiguration(const wchar_t* name) noexcept {
    COMMCONFIG configuration{};
    static_assert(sizeof configuration == 52);
    DWORD sizeBytes = sizeof configuration;
    return GetDefaultCommConfigW(name, &configuration, &sizeBytes) != FALSE;
}

bool CanOpenPort(const wchar_t* openName) noexcept {
    const HANDLE port = CreateFileW(openName, 0, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    if (port == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(port);
    return true;
}
