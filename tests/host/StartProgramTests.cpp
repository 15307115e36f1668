// Starting a program beside this one.

#include "platform/StartProgram.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

#include "../Patience.h"
#include "Probe.h"
#include "text/Text.h"

#ifndef _WIN32
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#endif

namespace {

namespace fs = std::filesystem;

/// On Windows a file that was just renamed cannot be opened until whoever renamed it has let go.
std::string Read(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    Await([&] {
        if (!in.is_open()) {
            in.open(file, std::ios::binary);
        }
        return in.is_open();
    });
    return {std::istreambuf_iterator<char>(in), {}};
}

class StartProgramTest : public testing::Test {
 protected:
    StartProgramTest() { fs::create_directories(folder); }
    ~StartProgramTest() override {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    std::string File(const char* name) const { return PathText(folder / name); }

    /// What the probe says that it was given.
    std::string Told(std::vector<std::string> arguments, const std::string& input) {
        const std::string file = File("told.txt");
        fs::remove(file);
        arguments.insert(arguments.begin(), {"tell", file});
        EXPECT_EQ(StartProgram(probe, arguments, input), "");
        return WaitForFile(file) ? Read(file) : "it did nothing";
    }

    fs::path folder = PlaceFor("start");
    fs::path probe = Probe();
};

TEST_F(StartProgramTest, ArgumentsAndInputArriveAsTheyAre) {
    const std::vector<std::string> arguments{"on",       "two words", "",        "a\"b",       "\\",      "c:\\x\\",
                                             "a\\\\\"b", "%PATH%",    "$HOME",   "; rm -rf /", "`date`",  "& dir",
                                             "^&|<>",    "*",         "O\u2082", "\u00B0C",    "line\nof"};
    std::string expected;
    for (const std::string& argument : arguments) {
        expected += "<" + argument + ">\n";
    }
    EXPECT_EQ(Told(arguments, "{\"alarm\": \"on\"}"), expected + "input {\"alarm\": \"on\"}\nopen 0\noutput taken\n");
}

TEST_F(StartProgramTest, WithoutInputItsInputIsAtAnEnd) { EXPECT_EQ(Told({}, ""), "input \nopen 0\noutput taken\n"); }

TEST_F(StartProgramTest, LongInputArrivesWhole) {
    const std::string input(kLongestInput, 'x');
    EXPECT_EQ(Told({}, input), "input " + input + "\nopen 0\noutput taken\n");
}

TEST_F(StartProgramTest, FolderOfItsOwnIsWhereItWorks) {
    // Named from here, not from there.
    EXPECT_EQ(StartProgramIn(folder, fs::relative(probe), {"tell", "told.txt"}, ""), "");
    EXPECT_TRUE(WaitForFile(folder / "told.txt"));
}

TEST_F(StartProgramTest, FolderThatIsNotThereIsAReason) {
    EXPECT_NE(StartProgramIn(folder / "absent", probe, {"tell", File("told.txt")}, ""), "");
}

TEST_F(StartProgramTest, TextThatNoPipeHoldsIsRefused) {
    EXPECT_EQ(StartProgram(probe, {}, std::string(kLongestInput + 1, 'x')),
              "cannot start " + PathText(probe) + ": the text for it is too long");
}

TEST_F(StartProgramTest, ProgramThatDoesNotReadKeepsNobodyWaiting) {
    const std::string file = File("lingers");
    EXPECT_EQ(StartProgram(probe, {"linger", file}, std::string(kLongestInput, 'x')), "");
    EXPECT_TRUE(WaitForFile(file));
    EXPECT_FALSE(fs::exists(file + ".ended"));  // it lives, and this one goes on
    fs::remove(file);
    EXPECT_TRUE(WaitForFile(file + ".ended"));
}

TEST_F(StartProgramTest, ProgramThatIsNotThereIsAReason) {
    const std::string reason = StartProgram(folder / "absent", {}, "");
    EXPECT_EQ(reason.find("cannot start " + PathText(folder / "absent") + ": "), 0U) << reason;
    EXPECT_NE(StartProgram("oko-no-such-program-anywhere", {}, "").find("write where it is"), std::string::npos);
}

TEST_F(StartProgramTest, FileThatIsNoProgramIsAReason) {
    const fs::path file = folder / "text.exe";
    std::ofstream(file) << "no program";
    EXPECT_NE(StartProgram(file, {}, ""), "");
}

#ifdef _WIN32

TEST_F(StartProgramTest, BatchFileIsRefused) {
    for (const char* name : {"alarm.bat", "ALARM.CMD", "alarm.bat.", "alarm.cmd "}) {
        const std::string reason = StartProgram(folder / name, {}, "");
        EXPECT_NE(reason.find("a batch file is run by a shell"), std::string::npos) << name << ": " << reason;
    }
}

#else

TEST_F(StartProgramTest, NothingElseThatIsOpenIsPassedOn) {
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);  // both ends would go to any other child
    EXPECT_EQ(Told({}, ""), "input \nopen 0\noutput taken\n");
    close(ends[0]);
    close(ends[1]);
}

TEST_F(StartProgramTest, ProgramThatEndedLeavesNoZombie) {
    Told({}, "");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(StartProgramTest, NameAloneIsLookedForInPath) { EXPECT_EQ(StartProgram("true", {}, "unread"), ""); }

#endif

}  // namespace
