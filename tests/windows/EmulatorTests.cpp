// The real device against the emulated server: every scenario, and what a caller sees when the server misbehaves.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "Channels.h"
#include "EmulatorProcess.h"
#include "LoopbackClient.h"
#include "oko/BandState.h"
#include "oko/CDevApiInterface_Temperature.h"
#include "oko/INotify.h"
#include "windows/ChildProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/ScratchFolder.h"

namespace {

std::string ReadFile(const std::wstring& name) {
    std::ifstream file{std::filesystem::path(name)};
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A device that is up against the emulator that has the port.
class RunningDevice {
 public:
    RunningDevice() {
        HostRecord::Current() = {};
        Device().ApplyConnection(L"m_iComPort 3");
        initResult = Device().Init(HostRecord::Callback, nullptr);
        HostRecord::Current() = {};
    }
    ~RunningDevice() { Device().Close(); }
    RunningDevice(const RunningDevice&) = delete;
    RunningDevice& operator=(const RunningDevice&) = delete;

    CDevApiInterface& Device() const { return m_library.Device(0); }

    CDevApiInterface_Temperature& Temperature(std::uint32_t index) const { return TemperatureOf(Device(), index); }

    /// The names of all live channels.
    std::vector<std::wstring> Names() const {
        std::vector<std::wstring> names;
        const auto add = [&names](INotify& channel) {
            std::array<wchar_t, oko::kChannelNameLength> name{};
            channel.GetName(name.data(), oko::kChannelNameLength - 1);
            names.emplace_back(name.data());
        };
        for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(Device().GetTemperatureCount()); ++i) {
            add(Temperature(i));
        }
        for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(Device().GetGasConcentrationCount()); ++i) {
            add(GasConcentrationOf(Device(), i));
        }
        for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(Device().GetHumidifierCount()); ++i) {
            add(HumidifierOf(Device(), i));
        }
        return names;
    }

    std::int32_t initResult = -1;

 private:
    LoadedLibrary m_library;
};

/// A device that is up against an emulator of its own.
class Running {
 public:
    explicit Running(const std::wstring& options) : m_emulator(options) {}

    const RunningDevice* operator->() const { return &m_device; }

 private:
    EmulatorProcess m_emulator;
    RunningDevice m_device;
};

/// One emulator for all rows of a table.
class EmulatorForRows {
 public:
    /// Begins anew with a scenario, under no rule but this one.
    void Begin(const std::string& scenario, const std::string& rule = "") const {
        m_emulator.Tell("stop all");
        m_emulator.Tell("load " + scenario);
        if (!rule.empty()) {
            m_emulator.Tell("start " + rule);
        }
    }

 private:
    EmulatorProcess m_emulator{L"--control-input"};
};

TEST(EmulatorTests, EveryScenario_GivesItsChannels) {
    struct Case {
        const char* scenario;
        std::vector<std::wstring> names;
    };
    const EmulatorForRows emulator;
    const std::vector<std::wstring> heater{L"H301-T",      L"Base", L"Free sensor", L"Humidity #1",
                                           L"Humidity #2", L"Lid",  L"Objective",   L"Room"};
    std::vector<std::wstring> full = heater;
    full.insert(full.end(), {L"Humidifier", L"Sensing cell", L"CO2", L"O2", L"H301-HM-ACTIVE"});
    std::vector<std::wstring> failing = full;
    std::erase(failing, L"Base");
    for (const Case& row : std::vector<Case>{
             {"product-7", {L"H501-T Base", L"H501-T Lid", L"Humidity", L"Objective", L"Free sensor"}},
             {"product-8", {L"H201-T", L"Air heater", L"Cage", L"Sample"}},
             {"product-9", heater},
             {"product-10", {L"Humidifier", L"Sensing cell", L"CO2"}},
             {"product-11", {L"O2"}},
             {"product-12", {L"Humidifier", L"Sensing cell", L"CO2", L"O2"}},
             {"product-13", {L"Humidifier", L"Sensing cell", L"CO2", L"O2"}},
             {"product-14", {L"H101-T", L"Base", L"Free sensor", L"Objective", L"Room", L"Water bath"}},
             {"product-15", {L"Humidifier", L"Sensing cell", L"H301-HM-ACTIVE"}},
             {"product-16", {L"H401-T Device 1", L"H401-T Device 2", L""}},
             {"product-17",
              {L"Main", L"Chamber", L"Lid", L"Humidifier", L"Objective Heater", L"Heated tube", L"T sensor"}},
             {"full-incubator", full},
             {"simulator-default", full},
             {"failing-sensor", failing},
         }) {
        SCOPED_TRACE(row.scenario);
        emulator.Begin(row.scenario);
        const RunningDevice running;
        EXPECT_EQ(running.initResult, 0);
        EXPECT_EQ(running.Names(), row.names);
    }
}

TEST(EmulatorTests, Ranges_ComeFromTheServer) {
    const Running running(L"--scenario product-16");
    double min = 0.0;
    double max = 0.0;
    running->Temperature(0).GetTemperatureLimits(&min, &max);
    EXPECT_EQ(min, 25.0);
    EXPECT_EQ(max, 50.0);
    running->Temperature(2).GetTemperatureLimits(&min, &max);
    EXPECT_EQ(max, 0.0);
}

TEST(EmulatorTests, Target_ReachesTheServerAndItsValueArrives) {
    const Running running(L"--scenario product-9 --speed 2000");
    auto& channel = running->Temperature(0);
    ASSERT_EQ(channel.SetTargetTemperature(41.5), 0);
    double value = 0.0;
    EXPECT_EQ(channel.GetTargetTemperature(&value), 0);
    EXPECT_EQ(value, 41.5);
    EXPECT_TRUE(WaitUntil([&] {
        double current = 0.0;
        return channel.GetCurrentTemperature(&current) == 0 && std::abs(current - 41.5) < 0.1;
    }));
    std::uint32_t state = 0;
    channel.GetTemperatureState(&state);
    EXPECT_EQ(state, oko::kTemperatureWithin);
}

TEST(EmulatorTests, FailingSensor_IsReportedAndItsDeviceLogged) {
    const EmulatorProcess emulator(L"--scenario failing-sensor");
    const LoadedLibrary library;
    HostRecord::Current() = {};
    CDevApiInterface& device = library.Device(0);
    device.ApplyConnection(L"");
    ASSERT_EQ(device.Init(HostRecord::Callback, nullptr), 0);
    EXPECT_EQ(HostRecord::CountLines(L"OKO-Lab bold line status error: product 15, device 7, error: 4"), 1U);
    double value = 7.0;
    EXPECT_EQ(GasConcentrationOf(device, 1).GetCurrentGasConcentration(&value), -1);
    EXPECT_EQ(value, 7.0);
    device.Close();
}

TEST(EmulatorTests, FaultsOnARead_AreWhatTheCallerSees) {
    struct Case {
        const char* effect;
        int result;
        bool valueTaken;
        std::size_t lines;
    };
    const EmulatorForRows emulator;
    for (const Case& row :
         {Case{"code 1", 0, true, 1}, Case{"code 2", 0, true, 1}, Case{"code 3", -1, false, 1},
          Case{"code 7", 0, false, 0}, Case{"error broken", -1, false, 1}, Case{"empty", -1, false, 0},
          Case{"long 200", -1, false, 0}, Case{"truncate 1", 0, false, 0}, Case{"truncate 14", 0, false, 0},
          Case{"garbage 500", -1, false, 0}, Case{"no-separator", 0, false, 0}, Case{"no-return", 0, false, 0},
          Case{"late 300", 0, true, 0}, Case{"value nan", -1, false, 0}, Case{"value", 0, false, 0},
          Case{"value 999.5", 0, true, 0}, Case{"echo readcurval 1", 0, true, 0}}) {
        SCOPED_TRACE(row.effect);
        // The first read is Init's or none's: the rule is for the plain form, which only the channel sends.
        emulator.Begin("product-9", std::string("readcurval 9; always; ") + row.effect);
        const RunningDevice running;
        double value = -7.0;
        EXPECT_EQ(running.Temperature(0).GetCurrentTemperature(&value), row.result);
        EXPECT_EQ(value != -7.0, row.valueTaken);
        EXPECT_EQ(HostRecord::Current().lines.size(), row.lines);
    }
}

TEST(EmulatorTests, FaultsOnAWrite_AreWhatTheCallerSees) {
    struct Case {
        const char* effect;
        int result;
        std::size_t lines;
    };
    const EmulatorForRows emulator;
    for (const Case& row : {Case{"code 1", 0, 1}, Case{"code 2", 0, 1}, Case{"code 3", -1, 1}, Case{"code 8", 0, 0},
                            Case{"empty", -1, 0}, Case{"long 70", -1, 0}, Case{"no-separator", 0, 0}}) {
        SCOPED_TRACE(row.effect);
        emulator.Begin("product-9", std::string("writesetpoint*; always; ") + row.effect);
        const RunningDevice running;
        EXPECT_EQ(running.Temperature(0).SetTargetTemperature(40.0), row.result);
        EXPECT_EQ(HostRecord::Current().lines.size(), row.lines);
    }
}

TEST(EmulatorTests, ReadBackThatFails_RestoresThePreviousTargetAtTheServer) {
    const Running running(L"--scenario product-9 --fault \"readsetpoint*; nth 1; error\"");
    EXPECT_EQ(running->Temperature(0).SetTargetTemperature(40.0), 0);
    double value = 0.0;
    EXPECT_EQ(running->Temperature(0).GetTargetTemperature(&value), 0);
    EXPECT_EQ(value, 37.0);
}

TEST(EmulatorTests, FaultsDuringInit_LeaveOutWhatTheyHit) {
    struct Case {
        const char* rule;
        int result;
        int temperatures;
    };
    const EmulatorForRows emulator;
    for (const Case& row : {Case{"listprod; always; code 1", 0, 8}, Case{"listprod; always; garbage 4", 0, 8},
                            Case{"listconprod; always; empty", 0, 0}, Case{"listconprod; every 1; no-separator", 0, 0},
                            Case{"listconprod; nth 1; code 1", 0, 8}, Case{"listdev*; always; empty", 0, 8},
                            Case{"bl-param-list*; always; error", 0, 1}, Case{"bl-param-read*; always; value 0", 0, 1},
                            Case{"bl-param-read*; always; empty", 0, 1}, Case{"readmin*; always; error", 0, 8},
                            Case{"status; always; garbage 8", 0, 8}, Case{"mode*; always; empty", 0, 8},
                            Case{"start*; always; code 3", 0, 8}, Case{"comport*; always; error", 0, 8},
                            Case{"checkcon*; always; long 100", 0, 8}}) {
        SCOPED_TRACE(row.rule);
        emulator.Begin("product-9", row.rule);
        const RunningDevice running;
        EXPECT_EQ(running.initResult, row.result);
        EXPECT_EQ(running.Device().GetTemperatureCount(), row.temperatures);
    }
}

TEST(EmulatorTests, RecordOfARun_ReplaysToTheSameDevice) {
    const std::wstring record = ScratchFolder() + L"recorded run.txt";
    std::vector<std::wstring> names;
    {
        const Running running(L"--scenario product-12 --record \"" + record + L"\"");
        names = running->Names();
        // A second emulator does not get the port and leaves the running one's record alone.
        const std::string before = ReadFile(record);
        EXPECT_EQ(RunEmulator(L"--for 1 --record \"" + record + L"\""), 2U);
        EXPECT_EQ(ReadFile(record), before);
    }
    EXPECT_EQ(names.size(), 4U);
    {
        const Running running(L"--replay \"" + record + L"\"");
        EXPECT_EQ(running->initResult, 0);
        EXPECT_EQ(running->Names(), names);
    }
    std::filesystem::remove(record);
}

TEST(EmulatorTests, WrongInput_EndsWithAMessageAndItsCode) {
    EXPECT_EQ(RunEmulator(L"--list-scenarios"), 0U);
    const std::wstring file = ScratchFolder() + L"wrong.json";
    std::ofstream(std::filesystem::path(file)) << "{\"products\": 7}";
    const std::vector<std::wstring> wrong{L"--scenario nowhere",           L"--fault nonsense",
                                          L"--scenario \"" + file + L"\"", L"--for 1 --record no-such-folder/run.txt",
                                          L"--for 1 server port=x",        L"--for 1 server port=60000abc",
                                          L"--for 1 server port=99999"};
    EXPECT_EQ(ExitCodes(L"oko-control-emulator.exe", wrong), std::vector<DWORD>(wrong.size(), 1U));
    std::filesystem::remove(file);
}

TEST(EmulatorTests, LateReply_DoesNotKeepAnEmulatorBeyondItsTime) {
    const ChildProcess emulator(L"oko-control-emulator.exe", L"--for 2 --fault \"*; always; late 60000\"");
    EXPECT_TRUE(WaitUntil([&] { return emulator.HasWritten("answering on "); }));
    LoopbackClient().Send("listprod");
    EXPECT_EQ(emulator.ExitCode(), 0U);
}

TEST(EmulatorTests, InstalledCopy_FindsFilesThatWereNamedFromAnotherFolder) {
    const std::wstring scenario =
        std::filesystem::relative(ScratchFolder() + L"an installed scenario.json").wstring();  // to the current folder
    const std::filesystem::path folder = ScratchFolder() + L"installed copy";
    std::ofstream(std::filesystem::path(scenario)) << R"({"name": "installed", "products": []})";
    EXPECT_EQ(RunEmulator(L"--scenario \"" + scenario + L"\" --install \"" + folder.wstring() + L"\""), 0U);
    std::ifstream options(folder / L"OKO-Control Emulator.ini");
    std::string line;
    while (std::getline(options, line) && !line.starts_with("scenario=")) {
    }
    EXPECT_EQ(line, "scenario=\"" + std::filesystem::absolute(scenario).generic_string() + "\"");
    options.close();
    EXPECT_EQ(RunEmulator(L"--uninstall"), 0U);
    std::filesystem::remove(scenario);
    std::filesystem::remove_all(folder);
}

TEST(EmulatorTests, SecondInstallation_TakesThePlaceOfTheFirst) {
    const std::filesystem::path folder = ScratchFolder() + L"installed twice";
    const auto hasOption = [&](const std::string& option) {
        return ReadFile((folder / L"OKO-Control Emulator.ini").wstring()).find(option) != std::string::npos;
    };
    EXPECT_EQ(RunEmulator(L"--quiet --install \"" + folder.wstring() + L"\""), 0U);
    EXPECT_TRUE(hasOption("quiet=true"));
    EXPECT_EQ(RunEmulator(L"--speed 3 --install \"" + folder.wstring() + L"\""), 0U);
    EXPECT_TRUE(hasOption("speed=3"));
    EXPECT_FALSE(hasOption("quiet=true"));
    EXPECT_EQ(RunEmulator(L"--uninstall"), 0U);
    EXPECT_FALSE(std::filesystem::exists(folder / L"OKO-Control Emulator.exe"));
    std::filesystem::remove_all(folder);
}

TEST(EmulatorTests, InstalledCopyThatRecords_MustBeToldWhatBecomesOfTheLastRecord) {
    const std::wstring options =
        L" --record \"" + ScratchFolder() + L"of a copy.txt\" --install \"" + ScratchFolder() + L"recording copy\"";
    EXPECT_EQ(RunEmulator(options), 1U);
    EXPECT_FALSE(std::filesystem::exists(ScratchFolder() + L"recording copy"));
    EXPECT_NE(RunEmulator(L"--install \"\""), 0U);
}

}  // namespace
