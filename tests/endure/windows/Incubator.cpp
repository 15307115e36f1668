#include "Incubator.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Channels.h"
#include "Report.h"
#include "endure/windows/Exchanges.h"
#include "oko/CDevApiInterface_GasConcentration.h"
#include "oko/CDevApiInterface_Humidifier.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/INotify.h"
#include "oko/Result.h"
#include "scenarios/ScenarioReader.h"
#include "windows/EmulatorProcess.h"
#include "windows/ScratchFolder.h"

namespace {

std::wstring RecordFile() { return ScratchFolder() + L"endurance.txt"; }

/// The full incubator with restless sensors: a reading is hardly ever another channel's or an older one's.
std::wstring ScenarioFile() {
    std::string json(emulator::ReadyScenarios().at("full-incubator"));
    const std::string quiet = "\"noise\": 0.0";
    for (std::size_t at = json.find(quiet); at != std::string::npos; at = json.find(quiet, at + 1)) {
        json.replace(at, quiet.size(), "\"noise\": 0.9");
    }
    std::wstring file = ScratchFolder() + L"endurance.json";
    std::ofstream(std::filesystem::path(file)) << json;
    return file;
}

std::wstring EmulatorOptions(const std::vector<std::string>& rules) {
    std::wstring options = L"--scenario \"" + ScenarioFile() + L"\" --overwrite --record \"" + RecordFile() + L"\"";
    for (const std::string& rule : rules) {
        options += L" --fault \"" + std::wstring(rule.begin(), rule.end()) + L"\"";
    }
    return options;
}

int CountFired(const std::string& output) {
    int count = 0;
    for (std::size_t at = output.find("fault \""); at != std::string::npos; at = output.find("fault \"", at + 1)) {
        ++count;
    }
    return count;
}

std::string NameOf(INotify& channel) {
    std::array<wchar_t, oko::kChannelNameLength> name{};
    channel.GetName(name.data(), oko::kChannelNameLength - 1);
    const std::wstring text(name.data());
    return {text.begin(), text.end()};
}

/// One log line a refused command would be too many to keep.
void NoteNothing(std::int32_t, const wchar_t*) {}

constexpr double kUntouched = -7777.0;

/// Replaces the last word of "readsetpoint 9 0 -1".
std::string WriteStart(const std::string& targetCommand) {
    return "write" + targetCommand.substr(4, targetCommand.rfind(' ') + 1 - 4);
}

}  // namespace

std::string LiveChannel::WriteCommand(double target) const {
    std::array<char, 400> number{};
    std::snprintf(number.data(), number.size(), "%0.*f", decimals, target);
    return WriteStart(targetCommand) + number.data();
}

Incubator::Incubator() {
    const EmulatorProcess emulator(EmulatorOptions({}));
    Device().ApplyConnection(L"m_iComPort 3");
    EXPECT_EQ(Device().Init(NoteNothing, nullptr), oko::kSuccess);
    AddChannels();
    LearnCommands();
}

Incubator::~Incubator() {
    const EmulatorProcess emulator(EmulatorOptions({}));  // Close talks to it
    Device().Close();
}

void Incubator::AddChannels() {
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(Device().GetTemperatureCount()); ++i) {
        CDevApiInterface_Temperature* const channel = &TemperatureOf(Device(), i);
        m_channels.push_back({NameOf(*channel),
                              [channel](double* value) { return channel->GetCurrentTemperature(value); },
                              [channel](double* value) { return channel->GetTargetTemperature(value); },
                              [channel](double value) { return channel->SetTargetTemperature(value); },
                              "en",
                              "eNn",
                              25.0,
                              45.0,
                              1,
                              true,
                              {},
                              {},
                              {},
                              0.0});
    }
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(Device().GetGasConcentrationCount()); ++i) {
        CDevApiInterface_GasConcentration* const channel = &GasConcentrationOf(Device(), i);
        m_channels.push_back({NameOf(*channel),
                              [channel](double* value) { return channel->GetCurrentGasConcentration(value); },
                              [channel](double* value) { return channel->GetTargetGasConcentration(value); },
                              [channel](double value) { return channel->SetTargetGasConcentration(value); },
                              "e",
                              "e",
                              2.0,
                              18.0,
                              2,
                              false,
                              {},
                              {},
                              {},
                              0.0});
    }
    for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(Device().GetHumidifierCount()); ++i) {
        CDevApiInterface_Humidifier* const channel = &HumidifierOf(Device(), i);
        m_channels.push_back({NameOf(*channel),
                              [channel](double* value) { return channel->GetCurrentHumidity(value); },
                              [channel](double* value) { return channel->GetTargetHumidity(value); },
                              [channel](double value) { return channel->SetTargetHumidity(value); },
                              "e",
                              "e",
                              55.0,
                              90.0,
                              0,
                              false,
                              {},
                              {},
                              {},
                              0.0});
    }
    EXPECT_EQ(m_channels.size(), 13U);
}

void Incubator::LearnCommands() {
    std::size_t seen = ReadExchanges(RecordFile()).size();
    const auto sent = [&seen] {
        const std::vector<Exchange> all = ReadExchanges(RecordFile());
        std::vector<std::string> commands;
        for (; seen < all.size(); ++seen) {
            commands.push_back(all[seen].command);
        }
        return commands;
    };
    std::map<std::string, std::string> owners;
    for (LiveChannel& channel : m_channels) {
        double value = 0.0;
        EXPECT_EQ(channel.readCurrent(&value), oko::kSuccess) << channel.name;
        const std::vector<std::string> current = sent();
        const std::int32_t result = channel.readTarget(&value);
        channel.rememberedTarget = value;
        const std::vector<std::string> target = sent();
        ASSERT_EQ(current.size(), 1U) << channel.name;
        EXPECT_EQ(result == oko::kSuccess, !target.empty()) << channel.name;
        channel.currentCommand = current.front();
        channel.targetCommand = target.empty() ? "" : target.back();
        channel.watchCommand = target.size() > 1 ? target.front() : "";
        for (const std::string& command : {channel.currentCommand, channel.targetCommand}) {
            EXPECT_TRUE(command.empty() || owners.emplace(command, channel.name).second)
                << command << " is of " << owners[command] << " and of " << channel.name;
        }
    }
}

std::vector<Exchange> Incubator::With(const std::vector<std::string>& rules, const std::function<void()>& work) {
    const EmulatorProcess emulator(EmulatorOptions(rules));
    work();
    // The emulator shows its faults a moment after they fired.
    constexpr DWORD kMomentMs = 200;
    std::string shown;
    do {
        shown = emulator.Output();
        Sleep(kMomentMs);
    } while (emulator.Output() != shown);
    m_fired = CountFired(shown);
    return ReadExchanges(RecordFile());
}

std::vector<Call> Incubator::MakeCalls(int count, const std::string& doing) {
    constexpr std::array kKinds{Call::Kind::Current, Call::Kind::Target, Call::Kind::Current, Call::Kind::Write};
    std::vector<Call> calls;
    while (static_cast<int>(calls.size()) < count) {
        const auto turn = static_cast<std::size_t>(m_made++);
        Call call{kKinds[turn / m_channels.size() % kKinds.size()], turn % m_channels.size(), kUntouched, 0,
                  kUntouched};
        const LiveChannel& channel = m_channels[call.channel];
        NoteProgress(doing + ", call " + std::to_string(calls.size()) + " to " + channel.name);
        if (call.kind == Call::Kind::Write) {
            // A whole number has as many decimals as any channel sends.
            call.given = channel.lowest +
                         static_cast<int>(turn * 7 % static_cast<std::size_t>(channel.highest - channel.lowest));
            call.result = channel.writeTarget(call.given);
        } else {
            call.result =
                call.kind == Call::Kind::Current ? channel.readCurrent(&call.value) : channel.readTarget(&call.value);
        }
        if (call.kind == Call::Kind::Current || !channel.targetCommand.empty()) {
            calls.push_back(call);
        } else {
            EXPECT_EQ(call.result, oko::kFailure) << channel.name;
        }
    }
    return calls;
}
