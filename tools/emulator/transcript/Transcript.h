#pragma once

#include <deque>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// A record of exchanges, one a line: seconds, command and replies, separated by tabs, printable. "-" stands for no
/// answer.

class TranscriptError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Bytes as printable text: "\r", "\n", "\t", "\\" and "\x7F" for what is not, and "\0" for nothing at all.
std::string Escape(std::string_view bytes);

/// The bytes again. Throws TranscriptError.
std::string Unescape(std::string_view text);

std::string FormatTranscriptLine(double seconds, std::string_view command, const std::vector<std::string>& replies);

/// Answers from a record: each command with the replies that it got, in turn; the last ones stay.
class Replay {
 public:
    /// Throws TranscriptError, with the number of the line.
    explicit Replay(std::string_view transcript);

    /// No datagrams for a command that the record does not have.
    std::vector<std::string> Answer(const std::string& command);

 private:
    std::map<std::string, std::deque<std::vector<std::string>>> m_answers;
};

}  // namespace emulator
