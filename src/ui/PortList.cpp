#include "ui/PortList.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/SerialPorts.h"

namespace {

constexpr std::int32_t kFirstPort = 1;
constexpr std::int32_t kLastPort = 64;
constexpr std::int32_t kLastShortName = 9;

}  // namespace

std::wstring PortOpenName(std::int32_t number) {
    const std::wstring name = L"COM" + std::to_wstring(number);
    return number <= kLastShortName ? name : L"\\\\.\\" + name;
}

std::vector<PortEntry> ListPorts() {
    std::vector<PortEntry> entries;
    for (std::int32_t number = kFirstPort; number <= kLastPort; ++number) {
        std::wstring label = L"COM" + std::to_wstring(number);
        if (!HasDefaultPortConfiguration(label.c_str())) {
            continue;
        }
        if (!CanOpenPort(PortOpenName(number).c_str())) {
            // kept: docs/oddities.md#english-everywhere
            label += L" (busy)";
        }
        entries.push_back({number, std::move(label)});
    }
    return entries;
}

std::size_t SelectedPort(std::span<const std::int32_t> ports, std::int32_t comPort) noexcept {
    const auto found = std::ranges::find(ports, comPort);
    return found != ports.end() ? static_cast<std::size_t>(found - ports.begin()) : 0;
}

std::int32_t ChosenPort(std::span<const std::int32_t> ports, int selection, std::int32_t previous) noexcept {
    const auto index = static_cast<std::size_t>(selection);
    return selection >= 0 && index < ports.size() ? ports[index] : previous;
}
