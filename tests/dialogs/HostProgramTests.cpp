// oko-host opens the dialogs as an imaging application would, keeps both settings texts and says what changed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "OpenDialog.h"
#include "ui/resources/ResourceIds.h"
#include "windows/ChildProcess.h"
#include "windows/DialogTexts.h"
#include "windows/EmulatorProcess.h"
#include "windows/LoadedLibrary.h"
#include "windows/ScratchFolder.h"

namespace {

class HostProgram : public ChildProcess {
 public:
    explicit HostProgram(const std::wstring& arguments) : ChildProcess(L"oko-host.exe", arguments) {}
};

class HostProgramTests : public testing::Test {
 protected:
    ~HostProgramTests() override { std::filesystem::remove(settingsFile); }

    std::wstring SettingsOption() const { return L" --settings \"" + settingsFile + L"\""; }

    std::string Settings() const {
        std::ifstream file{std::filesystem::path(settingsFile)};
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::wstring settingsFile = ScratchFolder() + L"host settings.ini";
};

const std::string kRest =
    " | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | dCO2Above 0.500000 | dO2Below 0.500000 | dO2Above 0.500000 | "
    "dHumidityBelow 1.000000 | dHumidityAbove 1.000000";

TEST_F(HostProgramTests, Configure_KeepsTheAlarmSettingsAndSaysWhatChanged) {
    const auto configure = [this](const wchar_t* below) {
        const HostProgram host(L"configure --device simulator" + SettingsOption());
        const auto dialog = AwaitDialog(host.ThreadId(), L"OKOLab Configuration");
        if (!dialog) {
            ADD_FAILURE() << "no dialog came";
            return std::string();
        }
        dialog->Type(IDC_TEMPERATURE_BELOW, below);
        dialog->Click(IDOK);
        EXPECT_EQ(host.ExitCode(), 0U);
        return host.Output();
    };
    EXPECT_NE(configure(L"0.7").find("now: dIncubatorBelow 0.700000" + kRest), std::string::npos);
    EXPECT_NE(Settings().find("alarms=dIncubatorBelow 0.700000" + kRest), std::string::npos);
    const std::string second = configure(L"0.9");
    EXPECT_NE(second.find("was: dIncubatorBelow 0.700000" + kRest), std::string::npos);
    EXPECT_NE(second.find("called back: 1 log lines, 0 changes of the air mode"), std::string::npos);
}

TEST_F(HostProgramTests, ConfigureThatIsCancelled_ChangesNothing) {
    const HostProgram host(L"configure" + SettingsOption());
    const auto dialog = AwaitDialog(host.ThreadId(), L"OKOLab Configuration");
    ASSERT_TRUE(dialog);
    dialog->Click(IDCANCEL);
    EXPECT_EQ(host.ExitCode(), 0U);
    EXPECT_TRUE(host.HasWritten("cancelled or refused"));
    EXPECT_EQ(Settings(), "");
}

TEST_F(HostProgramTests, Connect_KeepsThePortAndBringsTheDeviceUp) {
    const EmulatorProcess emulator(L"--scenario product-12");
    const HostProgram host(L"connect --device incubator" + SettingsOption());
    const auto dialog = AwaitDialog(host.ThreadId(), L"OKO-Lab bold line Connection");
    ASSERT_TRUE(dialog);
    SendMessageW(dialog->Control(IDC_PORT_LIST), CB_SETCURSEL, 3, 0);
    dialog->Click(IDOK);
    EXPECT_EQ(host.ExitCode(), 0U);
    EXPECT_TRUE(host.HasWritten("now: m_iComPort 4"));
    EXPECT_TRUE(host.HasWritten("connected: 4 channels"));
    EXPECT_NE(Settings().find("connection=m_iComPort 4"), std::string::npos);
}

TEST_F(HostProgramTests, Panel_IsShownUntilItsWindowIsClosed) {
    const HostProgram host(L"panel");
    HWND window = nullptr;
    ASSERT_TRUE(WaitUntil([&] {
        window = FindWindowW(L"OkoHostWindow", nullptr);
        return window != nullptr && FindWindowExW(window, nullptr, L"#32770", nullptr) != nullptr;
    }));
    EXPECT_TRUE(WaitUntil([&] { return IsWindowVisible(FindWindowExW(window, nullptr, L"#32770", nullptr)); }));
    PostMessageW(window, WM_CLOSE, 0, 0);
    EXPECT_EQ(host.ExitCode(), 0U);
}

TEST_F(HostProgramTests, LanguageOfTheSystem_MayBeNamed) {
    const HostProgram host(L"configure --language en" + SettingsOption());
    const auto dialog = AwaitDialog(host.ThreadId(), L"OKOLab Configuration");
    ASSERT_TRUE(dialog);
    dialog->Click(IDCANCEL);
    EXPECT_EQ(host.ExitCode(), 0U);
}

/// Where the system takes the choice the dialog comes in it; where it does not, as under Wine, that is said.
TEST_F(HostProgramTests, OtherLanguage_IsShownOrRefusedButNeverPretended) {
    const HostProgram host(L"configure --language de" + SettingsOption());
    std::optional<OpenDialog> dialog;
    EXPECT_TRUE(WaitUntil([&] {
        dialog = FindDialog(host.ThreadId());
        return dialog || host.HasWritten("lets no program choose the language");
    }));
    if (dialog) {
        EXPECT_EQ(dialog->Caption(), L"OKOLab Konfiguration");
        dialog->Click(IDCANCEL);
    }
    EXPECT_EQ(host.ExitCode(), dialog ? 0U : 5U);
}

/// With no library there the language is all that the command line can be wrong about.
std::wstring WithLanguage(std::string_view name) {
    return L"configure --library nowhere.dll --language " + std::wstring(name.begin(), name.end());
}

TEST_F(HostProgramTests, EachLanguageOfTheDialogs_MayBeNamed) {
    std::vector<std::wstring> byLanguage;
    for (const DialogTexts& texts : kDialogTexts) {
        const std::string_view name = texts.name;
        byLanguage.push_back(WithLanguage(name.substr(0, name.find('_'))));
    }
    const std::vector<DWORD> codes = ExitCodes(L"oko-host.exe", byLanguage);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        // Where two languages begin alike, by its whole name.
        std::string name = kDialogTexts[i].name;
        std::ranges::replace(name, '_', '-');
        EXPECT_TRUE(codes[i] == 4 || HostProgram(WithLanguage(name)).ExitCode() == 4) << name;
    }
}

TEST_F(HostProgramTests, UnknownLanguage_IsAMistakeOfTheCommandLine) {
    EXPECT_GE(HostProgram(WithLanguage("fo")).ExitCode(), 100U);
}

TEST_F(HostProgramTests, List_NamesBothDevices) {
    const HostProgram host(L"list");
    EXPECT_EQ(host.ExitCode(), 0U);
    EXPECT_TRUE(host.HasWritten("0  Incubator  OKO-Lab bold line\n1  Incubator  OKO-Lab bold line Simulator"))
        << host.Output();
}

TEST_F(HostProgramTests, Monitor_EndsWithItsSummary) {
    const HostProgram host(L"monitor --rows 2 --every 50ms --set H301-T=38.5 --set gas:CO2=7");
    EXPECT_EQ(host.ExitCode(), 0U);
    EXPECT_TRUE(host.HasWritten("38.50"));
    EXPECT_TRUE(host.HasWritten("done: simulator, "));
    EXPECT_TRUE(host.HasWritten("10 temperature, 2 gas and 1 humidity channels"));
}

TEST_F(HostProgramTests, MonitorOfAFailingIncubator_SaysWhy) {
    const EmulatorProcess emulator(L"--scenario product-9 --fault \"listprod; always; empty\"");
    const HostProgram host(L"monitor --device incubator --port 3 --for 1s");
    const auto box = AwaitDialogOfProcess(host.ProcessId(), L"OKO-Control server error.");
    ASSERT_TRUE(box);
    box->Click(IDOK);
    EXPECT_EQ(host.ExitCode(), 3U);
    EXPECT_TRUE(host.HasWritten("oko-host: the incubator could not be initialised: "));
}

TEST_F(HostProgramTests, Mistakes_HaveTheirExitCodes) {
    EXPECT_EQ(HostProgram(L"monitor --for 100ms --set Nobody=1").ExitCode(), 1U);
    EXPECT_EQ(HostProgram(L"list --library nowhere.dll").ExitCode(), 4U);
    for (const wchar_t* const seconds : {L"0", L"-1", L"1e400", L"1e-310", L"1e10", L"soon"}) {
        for (const DWORD code : ExitCodes(L"oko-host.exe", {std::wstring(L"monitor --for ") + seconds,
                                                            std::wstring(L"monitor --for 1s --every ") + seconds})) {
            EXPECT_GE(code, 100U) << seconds;
        }
    }
}

TEST_F(HostProgramTests, SettingsThatCannotBeKept_AreSaid) {
    const HostProgram host(L"configure --settings \"no such folder/host.ini\"");
    const auto dialog = AwaitDialog(host.ThreadId(), L"OKOLab Configuration");
    ASSERT_TRUE(dialog);
    dialog->Click(IDOK);
    EXPECT_EQ(host.ExitCode(), 6U);
    EXPECT_TRUE(host.HasWritten("cannot be written"));
}

}  // namespace
