#include "device/Session.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "device/SettingsFile.h"
#include "oko/CDevApiInterface.h"
#include "oko/HostCallback.h"
#include "oko/Result.h"
#include "text/Text.h"

namespace {

struct Record {
    std::function<void(const std::string&)> onLine;
    std::size_t lines = 0;
    std::size_t airModeChanges = 0;
};

Record& TheRecord() {
    static Record record;
    return record;
}

void OnHostCallback(std::int32_t code, const wchar_t* text) {
    if (code == oko::kCallbackLog && text != nullptr) {
        ++TheRecord().lines;
        TheRecord().onLine(ToUtf8(text));
    } else if (code == oko::kCallbackAirModeChanged) {
        ++TheRecord().airModeChanges;
    }
}

}  // namespace

Session::Session(CDevApiInterface& device, std::function<void(const std::string&)> onLine) : m_device(device) {
    TheRecord() = {std::move(onLine), 0, 0};
}

Session::~Session() {
    m_device.Close();
    TheRecord().onLine = [](const std::string&) {};  // its owner may be gone soon; the counts stay
}

bool Session::Open(const Settings& settings) {
    m_device.ApplyConnection(settings.connection.c_str());
    if (m_device.Init(OnHostCallback, nullptr) != oko::kSuccess) {
        return false;
    }
    if (!settings.alarms.empty()) {
        m_device.ApplyConfiguration(settings.alarms.c_str());
    }
    return true;
}

std::size_t Session::LogLines() { return TheRecord().lines; }

std::size_t Session::AirModeChanges() { return TheRecord().airModeChanges; }
