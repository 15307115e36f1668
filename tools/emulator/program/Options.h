#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "net/Address.h"
#include "transcript/Recorder.h"
#include "transcript/Replay.h"

namespace emulator {

/// Where "ctl" looks for a remote control when it is not told.
constexpr int kControlPort = 60'001;

/// What the command line says, in the order of its help.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): there is one of it
struct Options {
    std::string scenario = "full-incubator";
    double speed = 1.0;
    unsigned seed = 1;
    std::vector<std::string> faults;

    int port = 60000;         // 0: a free one
    double forSeconds = 0.0;  // 0: until somebody ends it
    bool untilEof = false;
    bool quiet = false;
    std::optional<int> controlPort;  // 0: a free one
    bool controlInput = false;
    std::vector<std::string> serverWords;  // "server address=localhost port=60000", as clients start it

    std::string record;
    RecordMode recordMode = RecordMode::Refuse;
    std::string replay;
    ReplayTiming timing = ReplayTiming::AtOnce;
    MissingReply missing = MissingReply::Refuse;
    ServerAddress proxied;  // with `proxy`
    bool proxy = false;
    std::string startProgram;  // empty: the real server runs already
    std::string check;
    ServerAddress checked;
    std::optional<double> tolerance;
    std::string show;

    bool commands = false;
    bool listScenarios = false;
    bool placeholder = false;
    std::string install;
    std::string installed;  // with `install`: the text of the installed copy's options file
    std::string displayName = "OKO-Control Server (emulator)";
    bool uninstall = false;

    std::vector<std::string> controlWords;  // of "ctl"
    bool ctl = false;
    int ctlPort = kControlPort;
};

/// Reads the command line and this copy's options file, if it has one. Gives the exit code where that is all: help was
/// shown, or a mistake told. Throws std::runtime_error for options that would be ignored, or do harm, and for words
/// that start no server.
std::variant<Options, int> ReadOptions(int argc, char** argv);

}  // namespace emulator
