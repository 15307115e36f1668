// A program beside this one, with both ends of a pipe.

#include "platform/PipedProcess.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "../Patience.h"
#include "Probe.h"
#include "probe/Hold.h"
#include "text/Text.h"

#ifndef _WIN32
#include <sys/wait.h>

#include <cerrno>
#endif

namespace {

namespace fs = std::filesystem;

bool Always() { return true; }

/// What it printed, with one kind of line ends.
std::string WithPlainLineEnds(std::string text) {
    std::erase(text, '\r');
    return text;
}

class PipedProcessTest : public testing::Test {
 protected:
    ~PipedProcessTest() override {
        std::error_code ignored;
        for (const fs::path& each : {file, ended, held}) {
            fs::remove(each, ignored);
        }
    }

    /// Whether the process that lingered is gone, and did not end by itself.
    bool WasEnded() const {
        fs::remove(file);  // one that lives would end by itself, and tell of it
        return Await([&] { return Hold(held).Works(); }) && !fs::exists(ended);
    }

    /// Runs it to its end.
    ProcessEnd Run(PipedProcess& process) {
        return process.Run([this](std::string_view piece) { output += piece; }, Always);
    }

    const fs::path file = PlaceFor("piped");
    const fs::path ended = fs::path(file) += ".ended";
    const fs::path held = fs::path(file) += ".held";
    std::string output;
};

TEST_F(PipedProcessTest, WhatItSaysAndIsTold_GoesBothWaysAndItsExitCodeComesBack) {
    PipedProcess process(Probe(), {"talk"});
    const ProcessEnd end = process.Run(
        [&](std::string_view piece) {
            output += piece;
            if (output.ends_with("hello\n") || output.ends_with("hello\r\n")) {
                process.Write("one\n");
                process.Write("end\n");
            }
        },
        Always);
    EXPECT_EQ(WithPlainLineEnds(output), "hello\ngot one\ngot end\n");
    EXPECT_EQ(end.kind, ProcessEnd::Kind::Exited);
    EXPECT_EQ(end.exitCode, 5);
}

TEST_F(PipedProcessTest, MuchOutput_ArrivesWhole) {
    PipedProcess process(Probe(), {"flood"});
    EXPECT_EQ(Run(process).exitCode, 0);
    EXPECT_EQ(output.size(), 1'000'000U);
}

TEST_F(PipedProcessTest, Crash_IsTheSystemsReason) {
    PipedProcess process(Probe(), {"crash"});
    const ProcessEnd end = Run(process);
    EXPECT_EQ(end.kind, ProcessEnd::Kind::Crashed);
    EXPECT_NE(end.reason.find("an access to memory that is not there"), std::string::npos) << end.reason;
}

TEST_F(PipedProcessTest, TimeThatIsOver_EndsItAndWhatItStarted) {
    PipedProcess process(Probe(), {"spawn", PathText(file)});
    const ProcessEnd end = process.Run([](std::string_view) {}, [this] { return !fs::exists(file); });
    EXPECT_EQ(end.kind, ProcessEnd::Kind::Killed);
    EXPECT_TRUE(WasEnded());
}

TEST_F(PipedProcessTest, ItsOwnersEnd_EndsIt) {
    {
        const PipedProcess process(Probe(), {"linger", PathText(file)});
        EXPECT_TRUE(WaitForFile(file));
    }
    EXPECT_TRUE(WasEnded());
}

TEST_F(PipedProcessTest, InputThatNobodyReadsAnyMore_IsDropped) {
    PipedProcess process(Probe(), {"flood"});
    EXPECT_EQ(Run(process).exitCode, 0);
    process.Write("to nobody\n");
}

TEST_F(PipedProcessTest, ProgramThatIsNotThere_IsAnError) { EXPECT_THROW(PipedProcess(file, {}), std::runtime_error); }

#ifndef _WIN32

TEST_F(PipedProcessTest, ProgramThatEnded_LeavesNoZombie) {
    {
        PipedProcess process(Probe(), {"flood"});
        Run(process);
    }
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

#endif

}  // namespace
