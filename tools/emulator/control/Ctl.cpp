#include "control/Ctl.h"

#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <cstdint>
#include <istream>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

namespace emulator {

namespace {

enum CtlExit { kAllDone = 0, kNotDone = 1, kNobodyThere = 2 };

/// Prints the next reply; what is only told meanwhile is printed, too.
int PrintReply(std::istream& connection, std::ostream& output) {
    for (std::string line; std::getline(connection, line);) {
        output << line << std::endl;
        const auto reply = nlohmann::json::parse(line, nullptr, false);
        if (reply.is_object() && reply.contains("ok")) {
            return reply["ok"] == true ? kAllDone : kNotDone;
        }
    }
    return kNobodyThere;
}

}  // namespace

int RunCtl(int port, const std::vector<std::string>& words, std::istream& input, std::ostream& output,
           std::ostream& errors) {
    const boost::asio::ip::tcp::endpoint endpoint(boost::asio::ip::address_v4::loopback(),
                                                  static_cast<std::uint16_t>(port));
    boost::asio::ip::tcp::iostream connection(endpoint);
    if (!connection) {
        errors << "oko-control-emulator ctl: no emulator has its remote control on 127.0.0.1:" << port
               << "; start one with --control-port " << port << "\n";
        return kNobodyThere;
    }
    int result = kAllDone;
    const auto ask = [&](const std::string& line) {
        connection << line << std::endl;
        const int came = PrintReply(connection, output);
        result = result == kAllDone ? came : result;
        return came != kNobodyThere;
    };
    if (words.empty()) {
        for (std::string line; std::getline(input, line);) {
            if (line.find_first_not_of(" \r") != std::string::npos && !ask(line)) {
                break;
            }
        }
        return result;
    }
    std::string line;
    for (const std::string& word : words) {
        line += (line.empty() ? "" : " ") + word;
    }
    if (ask(line) && result == kAllDone && line == "watch on") {
        while (PrintReply(connection, output) != kNobodyThere) {
        }
    }
    return result;
}

}  // namespace emulator
