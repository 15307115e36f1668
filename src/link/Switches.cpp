#include "link/Switches.h"

#include <cstdint>

#include "platform/Registry.h"

namespace {

constexpr const wchar_t* kSwitchesKey = L"Software\\Vellmark\\Misc";
constexpr const wchar_t* kLogValue = L"LogCommunication";
constexpr const wchar_t* kReplyTimeoutValue = L"ReplyTimeout";

/// A number of exactly four bytes; anything else counts as 0.
std::uint32_t ReadSwitch(const RegistryKey& key, const wchar_t* value) noexcept {
    const auto info = key.Query(value);
    if (!info || info->type != kRegistryDword || info->sizeBytes != sizeof(std::uint32_t)) {
        return 0;
    }
    return key.ReadDword(value).value_or(0);
}

}  // namespace

Switches ReadSwitches() noexcept {
    const auto key = OpenLocalMachine(kSwitchesKey);
    if (!key) {
        return {};
    }
    return {ReadSwitch(*key, kLogValue) == 1U, ReadSwitch(*key, kReplyTimeoutValue)};
}
