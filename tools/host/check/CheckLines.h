#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace check {

/// What a check's process says to the one that started it, a line each: a word and a text. The library may print what
/// it likes in between.

/// What a check says that is not for the server.
struct CheckLine {
    std::string word;
    std::string text;
};

namespace word {
inline constexpr const char* kBegin = "begin";        // to the check's process: its time runs from here
inline constexpr const char* kEnter = "enter";        // a call, before it is made
inline constexpr const char* kLeave = "leave";        // it has come back
inline constexpr const char* kAsk = "ask";            // something of the server: waits for a line on its standard input
inline constexpr const char* kFailed = "failed";      // the verdict: what was expected and what came
inline constexpr const char* kSkipped = "skipped";    // the verdict: why
inline constexpr const char* kPassed = "passed";      // the verdict
inline constexpr const char* kUnusable = "unusable";  // no library to check
}  // namespace word

/// What is entered to load the library.
inline constexpr const char* kLoadCall = "LoadLibrary()";

/// The line for it, with a line end before it, too: what the library prints may have none.
std::string FormatCheckLine(std::string_view word, std::string_view text);

/// Puts lines together from pieces as they come.
class CheckLineReader {
 public:
    explicit CheckLineReader(std::function<void(const CheckLine&)> onLine) : m_onLine(std::move(onLine)) {}

    void Take(std::string_view piece);

 private:
    std::function<void(const CheckLine&)> m_onLine;
    std::string m_rest;
};

/// Several texts as one, and back; the texts have no tabs.
std::string JoinTexts(const std::vector<std::string>& texts);
std::vector<std::string> SplitTexts(std::string_view joined);

}  // namespace check
