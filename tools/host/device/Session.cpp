#include "device/Session.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "device/SettingsFile.h"
#include "oko/CDevApiInterface.h"
#include "oko/HostCallback.h"
#include "oko/Result.h"
#include "text/Text.h"

namespace {

/// What a host would have stored the first time: the incubator's usual tolerances.
constexpr const wchar_t* kDefaultAlarmSettings =
    L"dIncubatorBelow 0.200000 | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | dCO2Above 0.500000 | "
    L"dO2Below 0.500000 | dO2Above 0.500000 | dHumidityBelow 1.000000 | dHumidityAbove 1.000000";

struct Record {
    std::vector<std::string> lines;
    std::size_t airModeChanges = 0;
    std::function<void()> beforeLine;
};

Record& TheRecord() {
    static Record record;
    return record;
}

void ShowLine(const std::string& line) {
    if (TheRecord().beforeLine) {
        TheRecord().beforeLine();
    }
    std::cerr << line << std::endl;
}

/// Shows the library's lines as they come.
void OnHostCallback(std::int32_t code, const wchar_t* text) {
    if (code == oko::kCallbackLog && text != nullptr) {
        TheRecord().lines.push_back(ToUtf8(text));
        ShowLine("log: " + TheRecord().lines.back());
    } else if (code == oko::kCallbackAirModeChanged) {
        ++TheRecord().airModeChanges;
        ShowLine("air mode changed");
    }
}

}  // namespace

Session::Session(CDevApiInterface& device, std::function<void()> beforeLine) : m_device(device) {
    TheRecord() = {};
    TheRecord().beforeLine = std::move(beforeLine);
}

Session::~Session() {
    m_device.Close();
    TheRecord().beforeLine = {};  // its owner may be gone soon; the lines stay
}

bool Session::Open(const Settings& settings) {
    m_device.ApplyConnection(settings.connection.c_str());
    if (m_device.Init(OnHostCallback, nullptr) != oko::kSuccess) {
        return false;
    }
    m_device.ApplyConfiguration(settings.alarms.empty() ? kDefaultAlarmSettings : settings.alarms.c_str());
    return true;
}

const std::vector<std::string>& Session::LogLines() { return TheRecord().lines; }

std::size_t Session::AirModeChanges() { return TheRecord().airModeChanges; }
