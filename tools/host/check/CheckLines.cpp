#include "check/CheckLines.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace check {

namespace {

/// Nobody prints this by chance.
constexpr std::string_view kMark = "\x01oko-check ";

/// What a library that prints without a line end may have before us.
constexpr std::size_t kLongestLine = 1U << 20U;

}  // namespace

std::string FormatCheckLine(std::string_view word, std::string_view text) {
    std::string line = "\n";
    line.append(kMark).append(word).append(" ").append(text);
    std::replace(line.begin() + 1, line.end(), '\n', ' ');
    std::replace(line.begin() + 1, line.end(), '\r', ' ');
    return line + "\n";
}

void CheckLineReader::Take(std::string_view piece) {
    m_rest.append(piece);
    std::size_t begin = 0;
    for (std::size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n', begin)) {
        std::string_view line = std::string_view(m_rest).substr(begin, end - begin);
        begin = end + 1;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        if (line.starts_with(kMark)) {
            line.remove_prefix(kMark.size());
            const std::size_t blank = std::min(line.find(' '), line.size());
            m_onLine({std::string(line.substr(0, blank)), std::string(line.substr(std::min(blank + 1, line.size())))});
        }
    }
    m_rest.erase(0, begin);
    if (m_rest.size() > kLongestLine) {
        m_rest.clear();
    }
}

std::string JoinTexts(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) {
        joined.append(joined.empty() ? "" : "\t").append(text);
    }
    return joined;
}

std::vector<std::string> SplitTexts(std::string_view joined) {
    std::vector<std::string> texts;
    while (!joined.empty()) {
        const std::size_t end = std::min(joined.find('\t'), joined.size());
        texts.emplace_back(joined.substr(0, end));
        joined.remove_prefix(std::min(end + 1, joined.size()));
    }
    return texts;
}

}  // namespace check
