#include "page/LivePage.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/host_name.hpp>
#include <boost/system/error_code.hpp>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <utility>

#include "keep/Keeper.h"
#include "model/Event.h"
#include "model/Snapshot.h"
#include "page/Access.h"
#include "page/Router.h"
#include "page/Server.h"

namespace {

/// 128 bits that nobody guesses.
std::string NewToken() {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> digit(0, kDigits.size() - 1);
    std::string token(32, '0');
    std::ranges::generate(token, [&] { return kDigits[digit(random)]; });
    return token;
}

/// Others would have to be encoded in an address, and some cannot stand in a cookie.
bool IsFitToken(const std::string& token) {
    const auto isFit = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
               std::string_view("-._~").find(c) != std::string_view::npos;
    };
    return token.size() >= 8 && std::ranges::all_of(token, isFit);
}

Server::Options ServerOptions(const LivePage::Options& options) {
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address(options.address, error);
    Server::Options server;
    server.address = options.address;
    server.port = options.port;
    server.access.isLocal = !error && address.is_loopback();
    server.access.token = options.token.empty() ? NewToken() : options.token;
    server.access.allowSet = options.allowSet;
    server.access.hostNames = options.hostNames;
    const std::string name = boost::asio::ip::host_name(error);
    if (!error && !name.empty()) {
        server.access.hostNames.push_back(name);
    }
    return server;
}

/// How this computer is called in an address.
std::string HostOf(const std::string& text) {
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address(text, error);
    if (!error && address.is_unspecified()) {
        const std::string name = boost::asio::ip::host_name(error);
        return error ? "localhost" : name;
    }
    return !error && address.is_v6() ? "[" + text + "]" : text;
}

}  // namespace

struct LivePage::Impl {
    Impl(const Options& given, SetTarget setTarget)
        : isFit(given.token.empty() || IsFitToken(given.token)),
          options(ServerOptions(given)),
          server(options, keeper,
                 [setTarget = std::move(setTarget)](std::uint64_t request, const TargetWanted& wanted) {
                     setTarget(request, wanted.key, wanted.value);
                 }) {}

    bool isFit;
    Server::Options options;
    Keeper keeper;
    Server server;
};

LivePage::LivePage(const Options& options, SetTarget setTarget)
    : m_impl(std::make_unique<Impl>(options, std::move(setTarget))) {}

LivePage::~LivePage() = default;

std::optional<std::string> LivePage::Start() {
    if (!m_impl->isFit) {
        return "a token has at least 8 characters: letters, digits, \"-\", \".\", \"_\" and \"~\"";
    }
    return m_impl->server.Start();
}

void LivePage::Stop() { m_impl->server.Stop(); }

void LivePage::Publish(const Snapshot& snapshot) {
    m_impl->keeper.Add(snapshot);
    m_impl->server.Wake();
}

void LivePage::Publish(const Event& event) {
    m_impl->keeper.Add(event);
    m_impl->server.Wake();
}

void LivePage::TargetDone(std::uint64_t request, std::optional<double> taken) {
    m_impl->server.TargetDone(request, {taken.has_value(), taken.value_or(0.0)});
}

std::string LivePage::Url() const {
    return "http://" + HostOf(m_impl->options.address) + ":" + std::to_string(m_impl->server.Port()) + "/";
}

std::string LivePage::UrlWithToken() const { return Url() + "?token=" + m_impl->options.access.token; }
