#include "platform/SerialPorts.h"

#include <algorithm>
#include <mutex>
#include <string>

#include "fakes/ScriptedPlatform.h"

namespace {

/// Over the records: ports may be asked for on any thread. A test scripts and reads them while nobody asks.
std::mutex s_mutex;

}  // namespace

bool HasDefaultPortConfiguration(const wchar_t* name) noexcept {
    ScriptedPorts& ports = ScriptedPlatform::Current().ports;
    const std::scoped_lock lock(s_mutex);
    ports.queried.emplace_back(name);
    return std::ranges::find(ports.existing, std::wstring(name)) != ports.existing.end();
}

bool CanOpenPort(const wchar_t* openName) noexcept {
    ScriptedPorts& ports = ScriptedPlatform::Current().ports;
    const std::scoped_lock lock(s_mutex);
    ports.opened.emplace_back(openName);
    std::wstring name(openName);
    if (name.starts_with(L"\\\\.\\")) {
        name.erase(0, 4);
    }
    return std::ranges::find(ports.busy, name) == ports.busy.end();
}
