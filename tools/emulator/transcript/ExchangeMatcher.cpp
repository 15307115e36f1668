#include "transcript/ExchangeMatcher.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/Answer.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

// As many are kept at most: a client that floods a silent server must not fill the memory.
constexpr std::size_t kMostOpen = 10'000;

}  // namespace

ExchangeMatcher::ExchangeMatcher(Patience patience, OnFinished onFinished)
    : m_patience(patience), m_onFinished(std::move(onFinished)) {}

void ExchangeMatcher::Command(const std::string& client, std::string command, double now) {
    EndAnswered(client);
    auto open = std::make_shared<Open>(Open{client, {now, std::move(command), {}, 0}, now});
    m_clients[client].open.push_back(open);
    m_inOrder.push_back(std::move(open));
    if (m_inOrder.size() > kMostOpen) {
        End(m_inOrder.front());
    }
    HandOver();
}

void ExchangeMatcher::EndAnswered(const std::string& client) {
    const auto found = m_clients.find(client);
    if (found == m_clients.end() || found->second.answered == 0) {
        return;  // a client whose server is silent may have many that are open
    }
    const std::deque<OpenPtr> earlier = found->second.open;
    for (const OpenPtr& open : earlier) {
        if (open->isAnswered && open->unsent == 0) {
            End(open);
        }
    }
}

ExchangeMatcher::OpenPtr ExchangeMatcher::FindFor(const std::string& client, std::string_view reply) const {
    const auto found = m_clients.find(client);
    if (found == m_clients.end()) {
        return nullptr;
    }
    const std::deque<OpenPtr>& open = found->second.open;
    const auto echoed = std::find_if(open.rbegin(), open.rend(), [reply](const OpenPtr& candidate) {
        return EchoesCommand(reply, candidate->exchange.command.value_or(""));
    });
    return echoed != open.rend() ? *echoed : open.back();
}

void ExchangeMatcher::Answered(const OpenPtr& open, std::size_t datagrams, double now) {
    if (open->isOver) {
        return;
    }
    if (!open->isAnswered) {
        open->isAnswered = true;
        ++m_clients[open->client].answered;
    }
    open->unsent += datagrams;
    open->last = now;
}

void ExchangeMatcher::Sent(const OpenPtr& open, std::string datagram, double now) {
    if (!open->isOver) {
        open->exchange.replies.push_back({std::move(datagram), now - open->exchange.seconds});
        open->unsent -= std::min<std::size_t>(open->unsent, 1);
        open->last = now;
    }
}

void ExchangeMatcher::Unasked(const std::string& client, std::string datagram, double now) {
    auto open = std::make_shared<Open>(Open{client, {now, std::nullopt, {{std::move(datagram), 0.0}}, 0}, now});
    open->isOver = true;
    m_inOrder.push_back(std::move(open));
    HandOver();
}

std::vector<ExchangeMatcher::OpenPtr> ExchangeMatcher::Unanswered(const std::string& client) const {
    std::vector<OpenPtr> unanswered;
    if (const auto found = m_clients.find(client); found != m_clients.end()) {
        std::ranges::copy_if(found->second.open, std::back_inserter(unanswered),
                             [](const OpenPtr& open) { return !open->isAnswered; });
    }
    return unanswered;
}

std::vector<ExchangeMatcher::OpenPtr> ExchangeMatcher::Unanswered() const {
    std::vector<OpenPtr> unanswered;
    std::ranges::copy_if(m_inOrder, std::back_inserter(unanswered),
                         [](const OpenPtr& open) { return !open->isAnswered && !open->isOver; });
    return unanswered;
}

void ExchangeMatcher::Tick(double now) {
    for (const OpenPtr& open : m_inOrder) {
        const double patience = open->isAnswered ? m_patience.afterReply : m_patience.withoutReply;
        if (!open->isOver && open->unsent == 0 && now - open->last >= patience) {
            End(open);
        }
    }
    HandOver();
}

void ExchangeMatcher::Finish() {
    for (const OpenPtr& open : m_inOrder) {
        open->isOver = true;
    }
    m_clients.clear();
    HandOver();
}

void ExchangeMatcher::End(const OpenPtr& open) {
    open->isOver = true;
    const auto found = m_clients.find(open->client);
    if (found == m_clients.end()) {
        return;
    }
    Client& client = found->second;
    if (const auto place = std::ranges::find(client.open, open); place != client.open.end()) {
        client.open.erase(place);
        client.answered -= open->isAnswered ? 1 : 0;
    }
    if (client.open.empty()) {
        m_clients.erase(found);
    }
}

void ExchangeMatcher::HandOver() {
    while (!m_inOrder.empty() && m_inOrder.front()->isOver) {
        const OpenPtr first = std::move(m_inOrder.front());
        m_inOrder.pop_front();
        m_onFinished(first->client, first->exchange);
    }
}

}  // namespace emulator
