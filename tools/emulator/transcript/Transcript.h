#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace emulator {

/// A record of exchanges, one a line: times, command and replies, separated by tabs, printable. The first column has
/// the second in which the command came and, behind blanks, how many seconds later each reply did; a time that is not
/// known is left out with those behind it. "-" stands for no answer, and as the command for a datagram that nobody
/// asked for.

class TranscriptError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

struct Reply {
    std::string datagram;
    std::optional<double> delaySeconds;  // after the command
};

struct Exchange {
    double seconds = 0.0;                // since the record began
    std::optional<std::string> command;  // none: nobody asked for what came
    std::vector<Reply> replies;          // none: no answer
    int line = 0;                        // of the transcript that it was read from, counted from 1
};

/// Bytes as printable text: "\r", "\n", "\t", "\\" and "\x7F" for what is not, and "\0" for nothing at all.
std::string Escape(std::string_view bytes);

/// The bytes again. Throws TranscriptError.
std::string Unescape(std::string_view text);

/// One line, without its end.
std::string FormatTranscriptLine(const Exchange& exchange);

/// All exchanges, in the order of their lines. Throws TranscriptError, with the number of the line.
std::vector<Exchange> ReadTranscript(std::string_view text);

}  // namespace emulator
