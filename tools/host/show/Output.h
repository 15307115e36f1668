#pragma once

#include <stdexcept>
#include <string>
#include <vector>

/// The standard output, which may be a full disk or a pipe that nobody reads any more.

class OutputError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Writes the text at once. Throws OutputError when that fails, the first time; after it nothing is written any more,
/// in silence: one sentence about it is enough.
void Print(const std::string& text);

/// Whether Print failed.
bool OutputFailed() noexcept;

/// The lines as one text, each with its end.
std::string JoinLines(const std::vector<std::string>& lines);
