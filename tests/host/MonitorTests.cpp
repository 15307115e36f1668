// oko-host monitor as a person runs it, natively and against a library that the tests made up.

#include <gtest/gtest.h>

#include <csignal>
#include <sstream>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "HostProcess.h"

namespace {

using Arguments = std::vector<std::string>;

class MonitorTests : public testing::Test {
 protected:
    /// A run of a few rows.
    int Run(const Arguments& more = {}) {
        Arguments arguments{"--rows", "3", "--every", "10ms"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        HostProcess host(folder, "monitor", arguments);
        const int code = host.ExitCode();
        output = host.Output();
        return code;
    }

    /// Ends it as a person does.
    static int Interrupt(HostProcess& host) {
        host.Signal(SIGINT);
        return host.ExitCode();
    }

    bool Says(const std::string& text) const { return output.find(text) != std::string::npos; }

    std::vector<std::string> Rows(const std::string& csv, const std::string& kind) const {
        std::vector<std::string> rows;
        std::istringstream lines(folder.Read(csv));
        for (std::string line; std::getline(lines, line);) {
            if (line.find("," + kind + ",") != std::string::npos) {
                rows.push_back(line);
            }
        }
        return rows;
    }

    HostFolder folder;
    std::string output;
};

TEST_F(MonitorTests, Device_IsNamedAndSaidToBeSimulatedOnEachTable) {
    EXPECT_EQ(Run(), kExitDone);
    EXPECT_EQ(output.find("simulator: a simulated incubator"), 0U) << output;
    EXPECT_TRUE(Says("Made-up simulator (simulated)  20"));
    EXPECT_TRUE(Says("  row 2\n"));
}

TEST_F(MonitorTests, TotalOutage_IsNoAnswerAndNoSuccess) {
    folder.Tell("fail *\n");
    EXPECT_EQ(Run(), kExitDataMissing);
    EXPECT_TRUE(Says("0  CO2       gas                -       -  %     no answer")) << output;
    EXPECT_TRUE(Says("NO DATA: no channel answers"));
    EXPECT_FALSE(Says("  ok\n"));
}

TEST_F(MonitorTests, OneChannelThatFails_EndsInMissingData) {
    folder.Tell("fail CO2\n");
    EXPECT_EQ(Run(), kExitDataMissing);
    EXPECT_TRUE(Says("no answer"));
    EXPECT_FALSE(Says("NO DATA"));
}

TEST_F(MonitorTests, SensorHasNoState_AndGasAndHumidityHaveADirection) {
    folder.Tell("value CO2 3\nvalue Humidity 95\nvalue H301-T 30\n");
    EXPECT_EQ(Run(), kExitDone);
    EXPECT_TRUE(
        Says("Base      temperature    30.00       -  \xC2\xB0"
             "C    -\n"))
        << output;
    EXPECT_TRUE(Says("3.00    5.00  %     below\n"));
    EXPECT_TRUE(Says("95.00   90.00  %     above\n"));
    EXPECT_TRUE(
        Says("\xC2\xB0"
             "C    heating\n"));
}

TEST_F(MonitorTests, SilentDevice_IsToldAndLeftAtTheEnd) {
    HostProcess host(folder, "monitor", {"--every", "10ms", "--answer-within", "100ms"});
    ASSERT_TRUE(host.HasWritten("row 2\n"));
    folder.Tell("silent\n");
    ASSERT_TRUE(host.HasWritten("NO DATA: the device has not answered for"));
    EXPECT_EQ(Interrupt(host), kExitDataMissing);
    EXPECT_NE(host.Output().find("ended without closing it"), std::string::npos);
    EXPECT_EQ(folder.Journal().find("Close"), std::string::npos);
}

TEST_F(MonitorTests, SilentDevice_DoesNotKeepTheTimeFromEndingTheWatch) {
    folder.Tell("noread\n");
    HostProcess host(folder, "monitor", {"--for", "100ms", "--answer-within", "1h"});
    ASSERT_TRUE(host.HasWritten("done: simulator"));
    folder.Tell("");
    EXPECT_EQ(host.ExitCode(), kExitDataMissing) << host.Output();
}

TEST_F(MonitorTests, SilentInit_EndsWithItsOwnCode) {
    folder.Tell("silent\n");
    EXPECT_EQ(Run({"--answer-within", "100ms", "--start-within", "100ms"}), kExitNoAnswer);
    EXPECT_TRUE(Says("was not started within 100 ms")) << output;
}

TEST_F(MonitorTests, FailedInit_SaysTheReason) {
    folder.Tell("noinit\n");
    EXPECT_EQ(Run(), kExitInitFailed);
    EXPECT_TRUE(Says("the simulator could not be initialised: OKO-Lab bold line Init()"));
    EXPECT_NE(folder.Journal().find("Close"), std::string::npos);
}

TEST_F(MonitorTests, FirstInterrupt_EndsTheWatchAndClosesTheDevice) {
    HostProcess host(folder, "monitor", {"--every", "10ms"});
    ASSERT_TRUE(host.HasWritten("row 2\n"));
    EXPECT_EQ(Interrupt(host), kExitDone);
    EXPECT_NE(host.Output().find("done: simulator"), std::string::npos);
    EXPECT_NE(folder.Journal().find("Close"), std::string::npos);
}

TEST_F(MonitorTests, InterruptBeforeATargetIsTaken_EndsInOrder) {
    folder.Tell("hold\n");
    HostProcess host(folder, "monitor", {"--set", "CO2=7", "--answer-within", "1h"});
    ASSERT_TRUE(folder.HasHeard("set CO2"));
    host.Signal(SIGINT);
    ASSERT_TRUE(host.HasWritten("ended before the device had taken the target of CO2")) << host.Output();
    folder.Tell("");
    EXPECT_EQ(host.ExitCode(), kExitNoAnswer) << host.Output();
    EXPECT_NE(folder.Journal().find("Close"), std::string::npos);
}

TEST_F(MonitorTests, SecondInterrupt_EndsTheProgramAtOnce) {
    HostProcess host(folder, "monitor", {"--every", "10ms", "--answer-within", "1h"});
    ASSERT_TRUE(host.HasWritten("row 2\n"));
    folder.Tell("silent\n");
    host.Signal(SIGINT);
    ASSERT_TRUE(host.HasWritten("done: simulator"));
    host.Signal(SIGINT);
    EXPECT_EQ(host.ExitCode(), kExitInterrupted);
}

TEST_F(MonitorTests, IncubatorWithoutAKnownPort_IsRefusedAndNotTouched) {
    EXPECT_EQ(Run({"--device", "incubator"}), kExitNoPort);
    EXPECT_TRUE(Says("oko-host connect --device incubator")) << output;
    EXPECT_EQ(folder.Journal(), "");
}

TEST_F(MonitorTests, StoredSettings_AreUsedAndSaidBeforehand) {
    folder.Write("oko-host.ini", "connection=m_iComPort 4\nalarms=dIncubatorBelow 0.7\n");
    EXPECT_EQ(Run({"--device", "incubator"}), kExitDone);
    EXPECT_EQ(output.find("incubator on COM4"), 0U) << output;
    EXPECT_LT(output.find("as they are stored: dIncubatorBelow 0.7"), output.find("row 1"));
    EXPECT_TRUE(Says("Made-up incubator on COM4  20"));
    EXPECT_EQ(folder.Journal(), "connection m_iComPort 4 real\nInit\nalarms dIncubatorBelow 0.7\nClose\n");
}

TEST_F(MonitorTests, TolerancesThatNobodyStored_AreNotSent) {
    EXPECT_EQ(Run({"--device", "incubator", "--port", "3"}), kExitDone);
    EXPECT_EQ(folder.Journal(), "connection m_iComPort 3 real\nInit\nClose\n");
}

TEST_F(MonitorTests, ClampedTarget_IsSaid) {
    EXPECT_EQ(Run({"--set", "H301-T=99"}), kExitDone);
    EXPECT_TRUE(Says("H301-T: asked 99, the device took 60")) << output;
}

TEST_F(MonitorTests, ClampedTarget_IsAFailureWhenStrict) {
    EXPECT_EQ(Run({"--set", "H301-T=99", "--strict"}), kExitClamped);
    EXPECT_EQ(Run({"--set", "H301-T=38.5", "--strict"}), kExitDone);
}

TEST_F(MonitorTests, MistakesInTargets_AreToldBeforeAnythingIsSent) {
    EXPECT_EQ(Run({"--set", "CO2=7", "--set", "Base=30"}), kExitBadTarget);
    EXPECT_TRUE(Says("\"Base\" is a sensor without a target"));
    EXPECT_EQ(Run({"--set", "CO2=7", "--set", "Nobody=30"}), kExitBadTarget);
    EXPECT_EQ(folder.Journal().find("set "), std::string::npos);
    EXPECT_GE(Run({"--set", "CO2=7,5"}), 100);
    EXPECT_TRUE(Says("decimal comma"));
}

TEST_F(MonitorTests, RefusedTarget_EndsWithItsCode) {
    folder.Tell("fail CO2\n");
    EXPECT_EQ(Run({"--set", "CO2=7"}), kExitBadTarget);
    EXPECT_TRUE(Says("the target of CO2 could not be set"));
}

TEST_F(MonitorTests, FullDisk_IsToldOnceWithItsCode) {
    HostProcess host(folder, "monitor", {"--every", "10ms"}, "/dev/full");
    EXPECT_EQ(host.ExitCode(), kExitNotWritten);
    const std::string text = host.Output();
    const std::string sentence = "the output cannot be written";
    EXPECT_NE(text.find(sentence), std::string::npos);
    EXPECT_EQ(text.find(sentence), text.rfind(sentence));
}

TEST_F(MonitorTests, Csv_HoldsEachRowThatWasShown) {
    EXPECT_EQ(Run({"--csv", "log.csv"}), kExitDone);
    EXPECT_TRUE(Says("row " + std::to_string(Rows("log.csv", "sample").size()) + "\n")) << output;
    EXPECT_EQ(Rows("log.csv", "started").size(), 1U);
    EXPECT_EQ(Rows("log.csv", "ended").size(), 1U);
    EXPECT_EQ(Rows("log.csv", "log").size(), 1U) << "what Init logs comes before the log can begin";
}

TEST_F(MonitorTests, CsvThatIsThere_IsNotOverwritten) {
    folder.Write("log.csv", "mine");
    EXPECT_EQ(Run({"--csv", "log.csv"}), kExitNotWritten);
    EXPECT_EQ(folder.Read("log.csv"), "mine");
    EXPECT_EQ(folder.Journal(), "") << "refused before the device is touched";
}

TEST_F(MonitorTests, KilledProgram_LosesNoWholeRow) {
    HostProcess host(folder, "monitor", {"--every", "10ms", "--csv", "log.csv"});
    ASSERT_TRUE(host.HasWritten("row 10\n"));
    host.Signal(SIGKILL);
    EXPECT_EQ(host.ExitCode(), -SIGKILL);
    EXPECT_GE(Rows("log.csv", "sample").size(), 10U);
}

TEST_F(MonitorTests, Alarm_IsALineARowAndTheExitCode) {
    HostProcess host(folder, "monitor", {"--every", "10ms", "--csv", "log.csv", "--alarm", "CO2: 4.5..5.5 for 50ms"});
    ASSERT_TRUE(host.HasWritten("row 2\n"));
    folder.Tell("value CO2 6.2\n");
    ASSERT_TRUE(host.HasWritten("ALARM: CO2 is 6.20 %, above 5.50 %"));
    EXPECT_EQ(Interrupt(host), kExitAlarm);
    EXPECT_EQ(Rows("log.csv", "alarm on").size(), 1U);
}

TEST_F(MonitorTests, AlarmThatWentOff_IsNoFailureAtTheEnd) {
    HostProcess host(folder, "monitor", {"--every", "10ms", "--alarm", "CO2: 4.5..5.5"});
    ASSERT_TRUE(host.HasWritten("row 2\n"));
    folder.Tell("value CO2 6.2\n");
    ASSERT_TRUE(host.HasWritten("alarm on CO2"));
    folder.Tell("");
    ASSERT_TRUE(host.HasWritten("alarm off CO2"));
    EXPECT_EQ(Interrupt(host), kExitDone);
}

TEST_F(MonitorTests, MissingData_IsAnAlarmOfItsOwn) {
    folder.Tell("fail CO2\n");
    HostProcess host(folder, "monitor", {"--every", "10ms", "--missing", "20ms"});
    ASSERT_TRUE(host.HasWritten("alarm on CO2: CO2 has given no value"));
    EXPECT_EQ(Interrupt(host), kExitAlarm);
}

TEST_F(MonitorTests, AlarmThatCannotBe_IsRefused) {
    EXPECT_EQ(Run({"--alarm", "Base"}), kExitBadTarget);
    EXPECT_EQ(Run({"--alarm", "Nobody: 1..2"}), kExitBadTarget);
    EXPECT_GE(Run({"--alarm", "CO2: 5..4"}), 100);
}

}  // namespace
