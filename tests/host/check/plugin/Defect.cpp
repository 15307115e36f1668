#include "Defect.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <istream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace {

Defect ReadDefect() {
    const char* const text = std::getenv("OKO_DEFECT");
    Defect defect;
    std::istringstream words(text != nullptr ? text : "");
    words >> defect.where;
    if (defect.where == "send" || defect.where == "receive") {
        std::getline(words >> std::ws, defect.pattern, ';');
        words >> defect.action;
        std::getline(words >> std::ws, defect.text);
    } else {
        words >> defect.action >> defect.from;
    }
    if (defect.from < 1) {
        defect.from = 1;
    }
    return defect;
}

}  // namespace

const Defect& TheDefect() {
    static const Defect defect = ReadDefect();
    return defect;
}

void Suffer(std::string_view slot) {
    static int calls = 0;
    if (TheDefect().where != slot || ++calls < TheDefect().from) {
        return;
    }
    const std::string& action = TheDefect().action;
    if (action == "crash") {
        std::signal(SIGSEGV, SIG_DFL);
        std::raise(SIGSEGV);
    } else if (action == "hang") {
        for (;;) {
            std::this_thread::sleep_for(std::chrono::hours(1));
        }
    } else if (action == "throw") {
        throw std::runtime_error("out of luck");
    } else if (action == "exit") {
        _exit(7);
    } else if (action == "chatter") {
        Chatter();
    }
}

bool FitsCommand(std::string_view command, std::string_view pattern) {
    const std::size_t star = pattern.find('*');
    if (star == std::string_view::npos) {
        return command == pattern;
    }
    return command.starts_with(pattern.substr(0, star)) && command.ends_with(pattern.substr(star + 1));
}

void Chatter() {
    constexpr std::uint16_t kPort = 60000;
    constexpr std::string_view kCommand = "readcurval 9(0)";
    const int number = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sendto(number, kCommand.data(), kCommand.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    char reply = 0;
    recv(number, &reply, 1, 0);  // so that it has come before anything that is said later
    close(number);
}
