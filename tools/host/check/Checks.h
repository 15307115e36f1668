#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace check {

/// What `oko-host check` and the processes that it starts were asked for.
struct CheckRequest {
    std::filesystem::path library;
    std::vector<std::string> only;     // names or patterns; none: all checks
    std::filesystem::path junit;       // empty: no such file
    double timeLimitSeconds = 20.0;    // of one check
    double replyTimeoutSeconds = 0.0;  // the library's; 0: it waits for ever
    bool json = false;
};

/// Runs the checks, tells of them, and gives the exit code. Throws OutputError and FileError.
int RunChecks(const CheckRequest& request);

/// Prints the names and what each holds.
int ListChecks(const CheckRequest& request);

/// One check, in this process, for the one that started it.
int RunCheckHere(const CheckRequest& request, const std::string& name);

}  // namespace check
