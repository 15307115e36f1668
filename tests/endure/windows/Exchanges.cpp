#include "Exchanges.h"

#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <string>
#include <vector>

#include "transcript/Transcript.h"

std::vector<Exchange> ReadExchanges(const std::wstring& recordFile) {
    std::vector<Exchange> exchanges;
    std::ifstream file(std::filesystem::path(recordFile), std::ios::binary);
    for (const emulator::Exchange& recorded :
         emulator::ReadTranscript(std::string(std::istreambuf_iterator<char>(file), {}))) {
        Exchange& exchange = exchanges.emplace_back(Exchange{recorded.command.value_or(""), {}});
        for (const emulator::Reply& reply : recorded.replies) {
            exchange.replies.push_back(reply.datagram);
        }
    }
    return exchanges;
}
