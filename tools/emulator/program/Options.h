#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

namespace emulator {

/// What the command line says.
struct Options {
    std::string scenario = "full-incubator";
    int port = 60000;  // 0: a free one
    double speed = 1.0;
    unsigned seed = 1;
    double forSeconds = 0.0;  // 0: until somebody ends it
    std::vector<std::string> faults;
    std::string record;
    std::string replay;
    std::string install;
    std::vector<std::string> serverWords;  // "server address=localhost port=60000", as clients start it
    std::string displayName = "OKO-Control Server (emulator)";
    bool listScenarios = false;
    bool uninstall = false;
    bool placeholder = false;
    bool quiet = false;
    bool untilEof = false;
};

/// Adds all options to the command line. `options` must outlive its reading.
void AddOptions(CLI::App& app, Options& options);

/// Takes the port from the words with which a client starts its server. Throws std::runtime_error for a word that is
/// none of those.
void TakeServerWords(Options& options);

/// The options that an installed copy is to have, as the text of its options file.
std::string StoredOptions(const CLI::App& app);

}  // namespace emulator
