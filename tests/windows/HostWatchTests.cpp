// oko-host against the emulator: what people see of an outage, what is sent to an incubator and what is not.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <optional>
#include <string>

#include "RegistryNames.h"
#include "windows/ChildProcess.h"
#include "windows/EmulatorProcess.h"
#include "windows/ScratchFolder.h"

namespace {

std::string ReadAll(const std::wstring& file) {
    std::ifstream stream{std::filesystem::path(file), std::ios::binary};
    return {std::istreambuf_iterator<char>(stream), {}};
}

class HostWatchTests : public testing::Test {
 protected:
    ~HostWatchTests() override {
        m_emulator.reset();
        for (const std::wstring& file : {m_record, m_settings, m_transcript}) {
            std::filesystem::remove(file);
        }
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark");
    }

    void Serve(const std::wstring& options) {
        m_emulator.emplace(L"--scenario product-12 --record \"" + m_record + L"\" " + options);
    }

    /// What was asked of the emulator, which ends with it.
    std::string Asked() {
        m_emulator.reset();
        return ReadAll(m_record);
    }

    void Store(const std::string& text) const { std::ofstream{std::filesystem::path(m_settings)} << text; }

    /// Runs the program to its end and keeps its output.
    DWORD Run(const std::wstring& arguments) {
        const ChildProcess host(L"oko-host.exe", arguments + L" --settings \"" + m_settings + L"\"");
        const DWORD code = host.ExitCode();
        m_output = host.Output();
        return code;
    }

    /// Watches the incubator for a few rows.
    DWORD Monitor(const std::wstring& more) { return Run(L"monitor --device incubator --every 50ms --rows 2 " + more); }

    bool Says(const std::string& text) const { return m_output.find(text) != std::string::npos; }

    static std::optional<DWORD> LogSwitch() {
        DWORD value = 0;
        DWORD size = sizeof value;
        const bool there = RegGetValueW(HKEY_LOCAL_MACHINE, kMiscKey, kLogValue, RRF_RT_REG_DWORD, nullptr, &value,
                                        &size) == ERROR_SUCCESS;
        return there ? std::optional(value) : std::nullopt;
    }

    const std::wstring m_record = ScratchFolder() + L"host record.tsv";
    const std::wstring m_settings = ScratchFolder() + L"host watch.ini";
    const std::wstring m_transcript = ScratchFolder() + L"host trace.tsv";
    std::optional<EmulatorProcess> m_emulator;
    std::string m_output;
};

TEST_F(HostWatchTests, Outage_IsNoAnswerAndNoSuccess) {
    Serve(L"--fault \"readcurval*; always; empty\" --fault \"bl-param-read*; always; empty\"");
    EXPECT_EQ(Monitor(L"--port 3"), 11U) << m_output;
    EXPECT_TRUE(Says("no answer")) << m_output;
    EXPECT_TRUE(Says("NO DATA: no channel answers")) << m_output;
    EXPECT_FALSE(Says("  ok")) << m_output;
}

TEST_F(HostWatchTests, ServerThatFallsSilent_IsToldAndTheTimeIsKept) {
    Serve(L"--fault \"readcurval*; nth 30; silent\"");
    EXPECT_EQ(Run(L"monitor --device incubator --port 3 --every 20ms --for 3s --answer-within 500ms"), 11U);
    EXPECT_TRUE(Says("row 2 ") || Says("row 2\n") || Says("row 2\r\n")) << m_output;
    EXPECT_TRUE(Says("NO DATA: the device has not answered for")) << m_output;
    // Not before its time; how long after it is the machine's affair.
    const std::string done = "done: incubator, ";
    const std::size_t at = m_output.find(done);
    ASSERT_NE(at, std::string::npos) << m_output;
    EXPECT_GE(std::stod(m_output.substr(at + done.size())), 3.0) << m_output;
    EXPECT_TRUE(Says("ended without closing it")) << m_output;
}

TEST_F(HostWatchTests, ServerThatIsSilentAtTheStart_EndsWithItsOwnCode) {
    Serve(L"--fault \"start 1; always; silent\"");
    EXPECT_EQ(Run(L"monitor --device incubator --port 3 --start-within 1500ms --answer-within 500ms --for 1min"), 8U);
    EXPECT_TRUE(Says("was not started within 1.5 s")) << m_output;
}

TEST_F(HostWatchTests, IncubatorWithoutAKnownPort_IsRefusedAndNothingIsSent) {
    Serve(L"");
    EXPECT_EQ(Monitor(L""), 9U);
    EXPECT_TRUE(Says("oko-host connect --device incubator")) << m_output;
    EXPECT_EQ(Run(L"list channels --device incubator"), 9U);
    EXPECT_EQ(Asked(), "");
}

TEST_F(HostWatchTests, StoredTolerances_AreSentAsTheyAre) {
    Store(
        "connection=m_iComPort 4\n"
        "alarms=dIncubatorBelow 0.700000 | dIncubatorAbove 0.900000 | dCO2Below 0.310000 | dCO2Above 0.350000 | "
        "dO2Below 0.500000 | dO2Above 0.500000 | dHumidityBelow 1.000000 | dHumidityAbove 1.000000\n");
    Serve(L"");
    EXPECT_EQ(Monitor(L""), 0U) << m_output;
    const std::string asked = Asked();
    EXPECT_NE(asked.find("\talarm 12 0.31\t"), std::string::npos) << asked;
    EXPECT_NE(asked.find("\tcomport 12 0 4\t"), std::string::npos) << asked;
}

TEST_F(HostWatchTests, TolerancesThatNobodyStored_AreNotSent) {
    Serve(L"");
    EXPECT_EQ(Monitor(L"--port 3"), 0U) << m_output;
    const std::string asked = Asked();
    EXPECT_NE(asked.find("\tstart 1\t"), std::string::npos) << asked;
    EXPECT_EQ(asked.find("\talarm "), std::string::npos) << asked;
}

TEST_F(HostWatchTests, ClampedTarget_IsSaidAndAFailureWhenStrict) {
    const std::wstring asked = L"monitor --every 50ms --rows 2 --set H301-T=99";
    EXPECT_EQ(Run(asked), 0U);
    EXPECT_TRUE(Says("H301-T: asked 99, the device took 60")) << m_output;
    EXPECT_EQ(Run(asked + L" --strict"), 2U);
    EXPECT_EQ(Run(L"monitor --every 50ms --rows 2 --set H301-T=38.5 --strict"), 0U) << m_output;
}

TEST_F(HostWatchTests, Doctor_OnlyAsksTheServerWhichProductsItHas) {
    Serve(L"");
    EXPECT_EQ(Run(L"doctor --port 3"), 0U) << m_output;
    EXPECT_TRUE(Says("127.0.0.1:60000 answers")) << m_output;
    EXPECT_TRUE(Says("connected: \"12\"")) << m_output;
    EXPECT_TRUE(Says("OKO-Lab bold line and OKO-Lab bold line Simulator")) << m_output;
    EXPECT_TRUE(Says("oko-control-emulator.exe (process ")) << m_output;
    const std::string asked = Asked();
    EXPECT_EQ(std::count(asked.begin(), asked.end(), '\n'), 2) << asked;
    EXPECT_NE(asked.find("\tlistprod\t"), std::string::npos) << asked;
    EXPECT_NE(asked.find("\tlistconprod\t"), std::string::npos) << asked;
}

TEST_F(HostWatchTests, DoctorOfASilentServer_IsAProblemAfterTheTimeForAnAnswer) {
    Serve(L"--fault \"*; always; silent\"");
    EXPECT_EQ(Run(L"doctor --port 3 --answer-within 300ms"), 16U);
    EXPECT_TRUE(Says("although the server runs")) << m_output;
    EXPECT_EQ(Asked().find("listconprod"), std::string::npos);
}

TEST_F(HostWatchTests, DoctorWithoutALibrary_SaysSo) {
    EXPECT_EQ(Run(L"doctor --device simulator --answer-within 100ms --library nowhere.dll"), 16U);
    EXPECT_TRUE(Says("there is no ")) << m_output;
    EXPECT_EQ(Run(L"doctor --device simulator --answer-within 100ms --library oko-host.exe"), 16U);
}

TEST_F(HostWatchTests, TraceWithoutTheLibrarysLog_SaysWhatToDo) {
    EXPECT_EQ(Run(L"trace --for 100ms"), 16U);
    EXPECT_TRUE(Says("set the REG_DWORD LogCommunication to 1")) << m_output;
    EXPECT_EQ(LogSwitch(), std::nullopt);
}

TEST_F(HostWatchTests, Trace_HoldsWhatTheServerSawAndLeavesTheSwitchAsItWas) {
    const DWORD off = 0;
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, kMiscKey, kLogValue, REG_DWORD, &off, sizeof off);
    Serve(L"");
    EXPECT_EQ(
        Run(L"trace --device incubator --port 3 --every 50ms --rows 2 --switch-on --output \"" + m_transcript + L"\""),
        0U)
        << m_output;
    EXPECT_EQ(LogSwitch(), DWORD{0});
    const std::string traced = ReadAll(m_transcript);
    const std::string asked = Asked();
    EXPECT_EQ(std::count(traced.begin(), traced.end(), '\n'), std::count(asked.begin(), asked.end(), '\n'));
    EXPECT_NE(traced.find("\tlistprod\t"), std::string::npos) << traced;
    EXPECT_NE(traced.find("\tstart 0\t"), std::string::npos) << traced;
}

TEST_F(HostWatchTests, Transcript_IsReplayedByTheEmulator) {
    Serve(L"");
    const std::wstring host = L" --device incubator --port 3 --every 50ms --rows 2";
    EXPECT_EQ(Run(L"trace" + host + L" --switch-on --output \"" + m_transcript + L"\""), 0U) << m_output;
    EXPECT_EQ(LogSwitch(), std::nullopt);
    m_emulator.reset();
    m_emulator.emplace(L"--replay \"" + m_transcript + L"\"");
    EXPECT_EQ(Run(L"monitor" + host), 0U) << m_output;
    EXPECT_TRUE(Says("done: incubator, ")) << m_output;
}

}  // namespace
