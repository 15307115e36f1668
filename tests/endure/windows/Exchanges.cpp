#include "Exchanges.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <ios>
#include <string>
#include <utility>
#include <vector>

#include "transcript/Transcript.h"

namespace {

std::vector<std::string> SplitAtTabs(const std::string& line) {
    std::vector<std::string> fields(1);
    for (const char c : line) {
        if (c == '\t') {
            fields.emplace_back();
        } else if (c != '\r') {
            fields.back() += c;
        }
    }
    return fields;
}

}  // namespace

std::vector<Exchange> ReadExchanges(const std::wstring& recordFile) {
    std::vector<Exchange> exchanges;
    std::ifstream file(std::filesystem::path(recordFile), std::ios::binary);
    std::string line;
    while (std::getline(file, line)) {
        const std::vector<std::string> fields = SplitAtTabs(line);  // the time, the command, the replies
        Exchange exchange{emulator::Unescape(fields.at(1)), {}};
        for (std::size_t i = 2; i < fields.size(); ++i) {
            if (fields[i] != "-") {
                exchange.replies.push_back(emulator::Unescape(fields[i]));
            }
        }
        exchanges.push_back(std::move(exchange));
    }
    return exchanges;
}
