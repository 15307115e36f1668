#include "judge/Watch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "text/Number.h"

namespace {

bool HasAnswered(const ChannelStatus& status) {
    return status.reads > 0 && status.reading.state != ChannelState::NoAnswer;
}

}  // namespace

bool Watch::Take(const DeviceMessage& message) {
    // It may have waited while time passed here; rows and events stand in the order of their times.
    if (message.when.seconds > m_snapshot.when.seconds) {
        m_snapshot.when = message.when;
    }
    bool row = false;
    // A message is a sign that the call before it returned; the next CallBegun begins another.
    if (!std::holds_alternative<device_message::LogLine>(message.what)) {
        m_call.reset();
    }
    if (const auto* opened = std::get_if<device_message::Opened>(&message.what)) {
        Handle(*opened);
    } else if (const auto* begun = std::get_if<device_message::CallBegun>(&message.what)) {
        m_call = Call{begun->channel, message.when};
        m_roundBegun = m_roundBegun.value_or(message.when);
    } else if (const auto* read = std::get_if<device_message::ChannelRead>(&message.what)) {
        Handle(*read);
    } else if (const auto* set = std::get_if<device_message::TargetSet>(&message.what)) {
        if (set->taken) {
            NoteTarget(set->channel, set->taken);
        }
    } else if (const auto* line = std::get_if<device_message::LogLine>(&message.what)) {
        Tell(EventKind::Log, line->text);
    } else if (std::holds_alternative<device_message::RoundDone>(message.what)) {
        m_dRoundSeconds = m_roundBegun ? message.when.seconds - m_roundBegun->seconds : 0.0;
        m_roundBegun.reset();
        m_bWithinRound = false;
        m_lastRow = message.when;
        ++m_snapshot.row;
        row = true;
    }
    JudgeLink();
    ForgetOldValues();
    return row;
}

bool Watch::Tick(Moment now) {
    m_snapshot.when = now;
    JudgeLink();
    ForgetOldValues();
    const double due = m_lastRow.seconds + m_rules.intervalSeconds;
    if (!m_bOpen || !m_bSilent || now.seconds < due) {
        return false;
    }
    // By the clock of the rows; but the time until the device counted as silent is not made up for.
    m_lastRow.seconds = now.seconds - due < m_rules.intervalSeconds ? due : now.seconds;
    ++m_snapshot.row;
    return true;
}

std::vector<Event> Watch::TakeEvents() { return std::exchange(m_events, {}); }

void Watch::Handle(const device_message::Opened& opened) {
    m_snapshot.device = opened.device;
    m_snapshot.channels = opened.channels;
    m_snapshot.statuses.assign(opened.channels.size(), {});
    m_answered.assign(opened.channels.size(), {});
    m_targets.assign(opened.channels.size(), {});
    m_airModes.assign(opened.channels.size(), {});
    m_lastRow = m_snapshot.when;
    m_bOpen = true;
    m_roundBegun.reset();
}

void Watch::Handle(const device_message::ChannelRead& read) {
    ChannelStatus& status = m_snapshot.statuses[read.channel];
    status.reading = read.reading;
    ++status.reads;
    m_bWithinRound = true;
    status.failedReads += read.reading.Valid() ? 0U : 1U;
    for (const double seconds : read.callSeconds) {
        m_snapshot.exchanges.Add(seconds);
    }
    if (read.reading.Valid()) {
        m_answered[read.channel] = m_snapshot.when;
    }
    NoteTarget(read.channel, read.reading.target);
    if (!read.reading.Valid()) {
        return;
    }
    std::optional<bool>& airMode = m_airModes[read.channel];
    if (airMode && *airMode != read.reading.airMode) {
        Tell(EventKind::AirMode, read.reading.airMode ? "on" : "off", m_snapshot.channels[read.channel].key);
    }
    airMode = read.reading.airMode;
}

void Watch::NoteTarget(std::size_t channel, std::optional<double> target) {
    if (!target) {
        return;  // what is not known has not changed
    }
    std::optional<double>& known = m_targets[channel];
    if (known && *known != *target) {
        Tell(EventKind::TargetChanged, FormatShortest(*known) + " -> " + FormatShortest(*target),
             m_snapshot.channels[channel].key);
    }
    known = target;
}

void Watch::JudgeLink() {
    m_bSilent = m_call && m_snapshot.when.seconds - m_call->begun.seconds > m_rules.answerWithinSeconds;
    if (!m_bOpen) {
        m_snapshot.live = false;
        m_snapshot.reason =
            m_bSilent ? "the device does not answer while it is started" : "the device is being started";
        return;
    }
    const bool anyRead = std::ranges::any_of(m_snapshot.statuses, [](const auto& status) { return status.reads > 0; });
    const bool anyAnswer = std::ranges::any_of(m_snapshot.statuses, HasAnswered);
    const bool allRead = std::ranges::all_of(m_snapshot.statuses, [](const auto& status) { return status.reads > 0; });
    const bool lost = m_bSilent || (anyRead && allRead && !anyAnswer);
    m_snapshot.live = anyRead && anyAnswer && !lost;
    if (m_bSilent) {
        const double silence = std::floor(m_snapshot.when.seconds - m_call->begun.seconds);
        m_snapshot.reason = "the device has not answered for " + FormatShortest(silence) + " s";
    } else {
        m_snapshot.reason = lost ? "no channel answers" : m_snapshot.live ? "" : "nothing was read yet";
    }
    if (lost != m_bLost) {
        Tell(lost ? EventKind::LinkLost : EventKind::LinkBack, lost ? m_snapshot.reason : "the device answers again");
        m_bLost = lost;
    }
}

/// A value is shown until its channel was to be read again, and had the time to answer.
void Watch::ForgetOldValues() {
    const double round = m_roundBegun ? m_snapshot.when.seconds - m_roundBegun->seconds : 0.0;
    const double oldest = std::max(round, m_dRoundSeconds) + m_rules.intervalSeconds + m_rules.answerWithinSeconds;
    for (std::size_t i = 0; i < m_snapshot.statuses.size(); ++i) {
        ChannelStatus& status = m_snapshot.statuses[i];
        const std::optional<Moment>& answered = m_answered[i];
        status.ageSeconds = answered ? std::optional(m_snapshot.when.seconds - answered->seconds) : std::nullopt;
        const bool asked = m_bSilent && m_call && m_call->channel.value_or(i) == i;
        const bool old = status.ageSeconds && *status.ageSeconds > oldest;
        if (asked || old || (m_bSilent && status.ageSeconds && *status.ageSeconds > m_rules.answerWithinSeconds)) {
            status.reading = {
                .current = {}, .target = {}, .state = ChannelState::NoAnswer, .airMode = status.reading.airMode};
        }
    }
}

void Watch::Tell(EventKind kind, std::string text, std::string channel) {
    m_events.push_back(
        {.id = 0, .when = m_snapshot.when, .kind = kind, .channel = std::move(channel), .text = std::move(text)});
}
