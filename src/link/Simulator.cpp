#include "link/Simulator.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <span>
#include <string_view>

#include "base/Numbers.h"
#include "base/Scan.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/CommandLog.h"
#include "link/Products.h"
#include "link/Reply.h"
#include "link/SimulatorTables.h"

namespace {

/// What an answer is made from.
struct Question {
    const SimulatorState& state;
    std::string_view command;
};

std::string_view From(std::string_view command, std::size_t position) noexcept {
    return command.substr(std::min(position, command.size()));
}

/// "0_<command>_", the start of most answers.
void Echo(const Question& question, SimulatorText& reply) noexcept {
    reply.Append("0_").Append(question.command).Append("_");
}

void AppendValue(SimulatorText& reply, double value) noexcept { reply.Append(FormatFixed(value, 3).view()); }

/// Appends one value of every addressed channel, without separators. Returns whether there was any.
// kept: docs/oddities.md#simulator-values-run-together
template <std::size_t Extent>
bool AppendMatching(SimulatorText& reply, std::span<const ChannelView, Extent> views, ChannelAddress address,
                    double ChannelView::* value) noexcept {
    bool found = false;
    for (const ChannelView& view : views) {
        if (view.exists && view.address == address) {
            AppendValue(reply, view.*value);
            found = true;
        }
    }
    return found;
}

bool AppendFromAll(SimulatorText& reply, const ChannelViews& channels, std::size_t temperatureSlots,
                   ChannelAddress address, double ChannelView::* value) noexcept {
    const std::span temperatures(channels.temperatures);
    const bool temperature = AppendMatching(reply, temperatures.first(temperatureSlots), address, value);
    const bool gas = AppendMatching(reply, std::span(channels.gasConcentrations), address, value);
    const bool humidity = AppendMatching(reply, std::span(channels.humidifiers), address, value);
    return temperature || gas || humidity;
}

void AnswerListProd(const Question&, SimulatorText& reply) noexcept { reply.Append(kListProdReply); }

void AnswerListConProd(const Question& question, SimulatorText& reply) noexcept {
    // kept: docs/oddities.md#simulator-answer-as-stored
    reply.Append(question.state.listconprod);
}

void AnswerListDev(const Question& question, SimulatorText& reply) noexcept {
    const auto row = std::ranges::find_if(
        kDeviceLists, [&](const CannedReply& list) { return question.command.starts_with(list.command); });
    if (row != kDeviceLists.end()) {
        reply.Append(row->reply);
    }
}

void AnswerOne(const Question& question, SimulatorText& reply) noexcept {
    Echo(question, reply);
    reply.Append("1");
}

/// A blank and no error triples.
void AnswerStatus(const Question& question, SimulatorText& reply) noexcept {
    Echo(question, reply);
    reply.Append(" ");
}

void AnswerReadCurrent(const Question& question, SimulatorText& reply) noexcept {
    constexpr std::size_t kArguments = std::string_view("readcurval ").size();
    constexpr std::size_t kLongestWithoutDevice = 14;
    const std::string_view arguments = From(question.command, kArguments);
    ChannelAddress address;
    if (question.command.size() > kLongestWithoutDevice) {
        Scanner scanner(arguments);
        scanner.Integer(address.m_iProduct) && scanner.Literal("(") && scanner.Integer(address.m_iChannel);
    } else {
        address.m_iProduct = ParseInteger(arguments);
    }
    Echo(question, reply);
    AppendFromAll(reply, question.state.channels, question.state.channels.temperatures.size(), address,
                  &ChannelView::current);
}

// kept: docs/oddities.md#simulator-parameter-as-device
void AnswerReadParam(const Question& question, SimulatorText& reply) noexcept {
    ChannelAddress address;
    Scanner scanner(From(question.command, std::string_view("bl-param-read ").size()));
    scanner.Integer(address.m_iProduct) && scanner.Integer(address.m_iChannel);
    Echo(question, reply);
    if (AppendFromAll(reply, question.state.channels, question.state.channels.temperatures.size(), address,
                      &ChannelView::current)) {
        return;
    }
    if (address.m_iChannel == parameter::kAirMode) {
        reply.Append(question.state.airMode ? "1" : "0");
        return;
    }
    const auto row = std::ranges::find_if(kParameterValues, [&](const ParameterValue& value) {
        return std::ranges::find(value.parameters, address.m_iChannel) != value.parameters.end();
    });
    if (row != kParameterValues.end()) {
        reply.Append(row->payload);
    }
}

// kept: docs/oddities.md#simulator-four-targets
void AnswerReadTarget(const Question& question, SimulatorText& reply) noexcept {
    constexpr std::size_t kTemperaturesWithTarget = 4;
    ChannelAddress address;
    Scanner scanner(question.command);
    scanner.Literal("readsetpoint ") && scanner.Integer(address.m_iProduct) && scanner.Integer(address.m_iChannel);
    Echo(question, reply);
    AppendFromAll(reply, question.state.channels, kTemperaturesWithTarget, address, &ChannelView::target);
}

void AnswerReadMin(const Question& question, SimulatorText& reply) noexcept {
    Echo(question, reply);
    reply.Append(question.command.starts_with("readmin 15") ? "50" : "0");
}

void AnswerReadMax(const Question& question, SimulatorText& reply) noexcept {
    Echo(question, reply);
    reply.Append(question.command.starts_with("readmax 15") ? "95" : "60");
}

void AnswerListParams(const Question& question, SimulatorText& reply) noexcept {
    const int product = ParseInteger(From(question.command, std::string_view("bl-param-list ").size()));
    Echo(question, reply);
    const auto row = std::ranges::find(kParameterLists, product, &ParameterList::product);
    if (row != kParameterLists.end()) {
        reply.Append(row->payload);
    }
}

struct AnswerRule {
    std::string_view keyword;
    void (*answer)(const Question& question, SimulatorText& reply) noexcept;
};

/// Searched from the top for the first keyword that the command begins with; the last row takes everything.
// kept: docs/oddities.md#simulator-starts-are-enough
constexpr std::array<AnswerRule, 16> kAnswerRules{{
    {"listprod", AnswerListProd},
    {"listconprod", AnswerListConProd},
    {"listdev", AnswerListDev},
    {"mode", AnswerOne},
    {"comport", AnswerOne},
    {"connect", AnswerOne},
    {"status", AnswerStatus},
    {"start", AnswerOne},
    {"readcurval", AnswerReadCurrent},
    {"bl-param-read", AnswerReadParam},
    {"readsetpoint", AnswerReadTarget},
    {"writesetpoint", AnswerOne},  // stores nothing: the channel keeps its target itself
    {"readmin", AnswerReadMin},
    {"readmax", AnswerReadMax},
    {"bl-param-list", AnswerListParams},
    {"", AnswerOne},
}};

}  // namespace

SimulatorText SimulatorReply(const SimulatorState& state, std::string_view command) noexcept {
    SimulatorText reply;
    const auto rule = std::ranges::find_if(
        kAnswerRules, [&](const AnswerRule& candidate) { return command.starts_with(candidate.keyword); });
    rule->answer({state, command}, reply);
    return reply.Append({&kReplyEnd, 1});
}

void CDevApiInterface_Impl::CommandSendSim(const char* command, [[maybe_unused]] int commandLength, char* reply,
                                           int replySize, int* replyLength) noexcept {
    std::array<char, kSimListconprodSize> listconprod;
    {
        const std::scoped_lock lock(m_csCatalogue);
        listconprod = m_szSimListconprod;
    }
    const SimulatorState state{ViewChannels(), listconprod.data(), m_bAirMode != 0};
    const SimulatorText text = SimulatorReply(state, command);
    const int length = std::min(static_cast<int>(text.length()), replySize);
    std::copy_n(text.c_str(), length, reply);
    reply[length] = '\0';  // into the spare byte when the reply was cut
    if (replyLength != nullptr) {
        *replyLength = length;
    }
    LogExchangeAndEndReply(*this, L"OKO-Lab bold line CommandSendSim:", command, reply, length);
}
