#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// "a, b or c", with that last word between the last two.
std::string JoinWords(const std::vector<std::string>& words, std::string_view last);

/// The text in double quotes, with its control characters as "\x0A": the rest of a message shall not be lost behind
/// them.
std::string InQuotes(std::string_view text);

/// The byte as "\x0A".
std::string EscapedByte(char byte);

/// Takes the first word off the text, and the blanks around it and behind it.
std::string_view TakeWord(std::string_view& text);

/// The words between blanks.
std::vector<std::string_view> SplitWords(std::string_view text);

/// "1 exchange", "2 exchanges".
std::string Counted(std::size_t count, const std::string& one, const std::string& several);
