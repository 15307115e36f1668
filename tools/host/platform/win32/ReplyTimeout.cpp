#include "platform/ReplyTimeout.h"

#include <windows.h>

#include <optional>

std::optional<double> LibraryReplyTimeout() {
    DWORD milliseconds = 0;
    DWORD size = sizeof milliseconds;
    const LSTATUS status = RegGetValueW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark\\Misc", L"ReplyTimeout",
                                        RRF_RT_REG_DWORD, nullptr, &milliseconds, &size);
    return status == ERROR_SUCCESS && milliseconds != 0 ? std::optional(milliseconds / 1000.0) : std::nullopt;
}
