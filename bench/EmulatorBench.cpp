// How many exchanges a second an emulator answers in a closed loop, where each client sends its next command when it
// has the reply to the last one; and what showing the exchanges costs of it. scripts/bench starts the emulators.

#include <algorithm>
#include <array>
#include <boost/asio/buffer.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/udp.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Pairs.h"
#include "Row.h"

namespace {

namespace asio = boost::asio;
using asio::ip::udp;
using boost::system::error_code;

constexpr std::size_t kExchanges = 4000;  // of all clients together, a block
constexpr std::size_t kBlocks = 15;
constexpr std::string_view kCommand = "readcurval 9";

/// One client; counts what it does in `left`, which all share.
class Client {
 public:
    Client(asio::io_context& context, std::uint16_t port, std::size_t& left)
        : m_socket(context, udp::v4()), m_left(left) {
        m_socket.connect({asio::ip::address_v4::loopback(), port});
    }

    void Ask() {
        if (m_left == 0) {
            return;
        }
        --m_left;
        m_socket.send(asio::buffer(kCommand));
        m_socket.async_receive(asio::buffer(m_reply), [this](error_code error, std::size_t length) {
            Require(!error && length > kCommand.size(), "an exchange failed");
            Ask();
        });
    }

 private:
    udp::socket m_socket;
    std::size_t& m_left;
    std::array<char, 256> m_reply{};
};

/// The seconds of a block of exchanges.
double Exchange(std::uint16_t port, std::size_t clients) {
    asio::io_context context;
    std::size_t left = kExchanges;
    std::vector<std::unique_ptr<Client>> all;
    for (std::size_t i = 0; i < clients; ++i) {
        all.push_back(std::make_unique<Client>(context, port, left));
    }
    return Seconds([&] {
        for (const auto& client : all) {
            client->Ask();
        }
        context.run();
    });
}

/// "12345 (11000 to 13000)": the median of the blocks, and all of them.
std::string Rate(std::uint16_t port, std::size_t clients) {
    std::array<double, kBlocks> rates{};
    Exchange(port, clients);  // the first one only warms up
    std::ranges::generate(rates, [&] { return static_cast<double>(kExchanges) / Exchange(port, clients); });
    std::ranges::sort(rates);
    return Text(rates[kBlocks / 2], 0) + " (" + Text(rates.front(), 0) + " to " + Text(rates.back(), 0) + ")";
}

std::uint16_t Port(const char* text) { return static_cast<std::uint16_t>(std::atoi(text)); }

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: oko-emulator-bench NAME QUIET-PORT SHOWING-PORT\n");
        return 2;
    }
    try {
        const std::string name = std::string("emulator, ") + argv[1];
        const std::uint16_t quiet = Port(argv[2]);
        const std::uint16_t showing = Port(argv[3]);
        constexpr std::size_t kMany = 16;
        PrintRow(name + ": exchanges/s, 1 client", Rate(quiet, 1));
        PrintRow(name + ": exchanges/s, 16 clients", Rate(quiet, kMany));
        const Ratio ratio =
            RatioOfPairs([&] { return Exchange(showing, kMany); }, [&] { return Exchange(quiet, kMany); });
        constexpr double kGoal = 1.25;
        PrintRow(name + ": time shown / quiet", Text(ratio), ratio.median, "<= 1.25", kGoal);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
