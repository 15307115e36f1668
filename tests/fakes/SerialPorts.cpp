#include "platform/SerialPorts.h"

#include <algorithm>

#include "fakes/ScriptedPlatform.h"

bool HasDefaultPortConfiguration(const wchar_t* name) noexcept {
    ScriptedPorts& ports = ScriptedPlatform::Current().ports;
    ports.queried.emplace_back(name);
    return std::ranges::find(ports.existing, std::wstring(name)) != ports.existing.end();
}

bool CanOpenPort(const wchar_t* openName) noexcept {
    ScriptedPorts& ports = ScriptedPlatform::Current().ports;
    ports.opened.emplace_back(openName);
    std::wstring name(openName);
    if (name.starts_with(L"\\\\.\\")) {
        name.erase(0, 4);
    }
    return std::ranges::find(ports.busy, name) == ports.busy.end();
}
