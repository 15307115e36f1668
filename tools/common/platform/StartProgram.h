#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Starts a program with these arguments (UTF-8), exactly as they are: no shell sees them. It reads `input` (at most
/// kLongestInput bytes) from its standard input, and what it prints goes nowhere. Nobody waits for it: the caller goes
/// on at once, whether or not the program reads, and it outlives the caller. It gets nothing else that the caller has
/// open. A name without a folder is looked for where the system looks for programs. It works in `folder`; where that is
/// empty, where the caller does.
///
/// Returns why it could not be started, for people; nothing when it runs.
std::string StartProgramIn(const std::filesystem::path& folder, const std::filesystem::path& program,
                           const std::vector<std::string>& arguments, std::string_view input);

/// The same where the caller works.
inline std::string StartProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                                std::string_view input) {
    return StartProgramIn({}, program, arguments, input);
}

/// What a pipe holds without a reader, on every system.
constexpr std::size_t kLongestInput = 32'768;
