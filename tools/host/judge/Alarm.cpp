#include "judge/Alarm.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "judge/AlarmRule.h"
#include "judge/Band.h"
#include "judge/Describe.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "text/Duration.h"

namespace {

constexpr double kUsualHysteresis = 0.05;  // of the band's width
constexpr double kRoundingSeconds = 1e-6;  // sums of short intervals fall short of their whole by this at most

bool HasPassed(double seconds, double delay) { return seconds >= delay - kRoundingSeconds; }

/// Whole seconds: nobody wants to read "2 min 0.4 s".
std::string Lasting(double seconds) { return FormatDuration(seconds < 1.0 ? seconds : std::round(seconds)); }

AlarmChange MakeChange(AlarmStatus status, const ChannelInfo& channel, Moment now, std::string text) {
    const EventKind kind = status.phase == AlarmPhase::On ? EventKind::AlarmOn : EventKind::AlarmOff;
    return {{0, now, kind, channel.key, std::move(text)}, std::move(status)};
}

}  // namespace

BandAlarm::BandAlarm(AlarmRule rule, ChannelInfo channel, Moment start)
    : m_rule(rule), m_channel(std::move(channel)), m_watchedSince(start), m_band(rule.band) {}

std::optional<AlarmChange> BandAlarm::Update(const Reading& reading, Moment now) {
    const bool wasOn = m_phase == AlarmPhase::On;
    TakeTarget(reading.target, now);
    ArmInTime(now);
    if (!reading.current) {
        m_lastRound.reset();
        return Change(wasOn, now);
    }
    if (m_band) {
        Judge(*reading.current, *m_band, now);
    }
    m_value = *reading.current;
    m_lastRound = now;
    return Change(wasOn, now);
}

std::optional<AlarmChange> BandAlarm::Change(bool wasOn, Moment now) const {
    if (wasOn == (m_phase == AlarmPhase::On)) {
        return std::nullopt;
    }
    return MakeChange(Status(), m_channel, now, wasOn ? OffText(now) : OnText());
}

/// A target that does not come once is no new one: the last one holds on.
void BandAlarm::TakeTarget(const std::optional<double>& target, Moment now) {
    if (m_rule.band || !target || m_target == target) {
        return;
    }
    if (m_target) {
        m_phase = AlarmPhase::Unarmed;
        m_settled = false;
        m_watchedSince = now;
    }
    m_target = target;
    m_band = BandAround(*target, m_channel);
}

void BandAlarm::ArmInTime(Moment now) {
    const double watched = now.seconds - m_watchedSince.seconds;
    if (m_phase == AlarmPhase::Unarmed && m_rule.withinSeconds && HasPassed(watched, *m_rule.withinSeconds)) {
        m_phase = AlarmPhase::Watching;
    }
}

void BandAlarm::Judge(double value, const Band& band, Moment now) {
    const bool inside = band.Holds(value);
    m_settled = m_settled || inside;
    if (m_phase == AlarmPhase::On) {
        m_phase = IsInsideByHysteresis(value, band) ? AlarmPhase::Watching : AlarmPhase::On;
        return;
    }
    if (inside) {
        m_phase = AlarmPhase::Watching;
        return;
    }
    if (m_phase == AlarmPhase::Unarmed) {
        return;
    }
    if (m_phase == AlarmPhase::Watching) {
        m_phase = AlarmPhase::Pending;
        m_since = now;
        m_outside = 0.0;
    } else {
        m_outside += m_lastRound ? now.seconds - m_lastRound->seconds : 0.0;
    }
    if (HasPassed(m_outside, m_rule.delaySeconds)) {
        m_phase = AlarmPhase::On;
    }
}

bool BandAlarm::IsInsideByHysteresis(double value, const Band& band) const {
    const double hysteresis = m_rule.hysteresis.value_or(kUsualHysteresis * band.Width());
    return value >= band.low + hysteresis && value <= band.high - hysteresis;
}

AlarmStatus BandAlarm::Status() const {
    const Band band = m_band.value_or(Band{});
    AlarmStatus status{AlarmKind::OutOfBand, m_rule.channel, m_phase, band.low, band.high, std::nullopt, {}};
    if (m_phase == AlarmPhase::Pending || m_phase == AlarmPhase::On) {
        status.since = m_since;
        status.reason = Reason();
    }
    return status;
}

std::string BandAlarm::Reason() const {
    const Band band = m_band.value_or(Band{});
    const std::string place = DescribePlace(m_channel, m_value, band);
    if (!m_lastRound) {
        return m_channel.key + " was " + place + ", when it last gave a value";
    }
    if (band.Holds(m_value)) {
        return m_channel.key + " is " + place + ", but not yet well inside";
    }
    return m_channel.key + " is " + place;
}

std::string BandAlarm::OnText() const {
    std::string text = Reason();
    if (m_outside > 0.0) {
        text += ", for " + Lasting(m_outside);
    }
    if (!m_settled) {
        text += "; it has not settled within " + FormatDuration(m_rule.withinSeconds.value_or(0.0));
    }
    return text;
}

std::string BandAlarm::OffText(Moment now) const {
    if (m_phase == AlarmPhase::Unarmed) {
        return m_channel.key + " has a new target, " + DescribeValue(m_channel, m_target.value_or(0.0)) +
               ": watched again once it is reached";
    }
    return m_channel.key + " is " + DescribePlace(m_channel, m_value, m_band.value_or(Band{})) + " again, after " +
           Lasting(now.seconds - m_since.seconds);
}

MissingDataAlarm::MissingDataAlarm(std::size_t index, ChannelInfo channel, double delaySeconds, Moment start)
    : m_index(index), m_channel(std::move(channel)), m_delaySeconds(delaySeconds), m_lastValue(start), m_now(start) {}

std::optional<AlarmChange> MissingDataAlarm::Update(const Reading& reading, Moment now) {
    m_now = now;
    const bool wasOn = m_phase == AlarmPhase::On;
    const double silent = now.seconds - m_lastValue.seconds;
    if (reading.Valid()) {
        m_phase = AlarmPhase::Watching;
        m_lastValue = now;
        if (wasOn) {
            return MakeChange(Status(), m_channel, now,
                              m_channel.key + " gives values again, after " + Lasting(silent));
        }
        return std::nullopt;
    }
    m_phase = HasPassed(silent, m_delaySeconds) ? AlarmPhase::On : AlarmPhase::Pending;
    if (wasOn || m_phase != AlarmPhase::On) {
        return std::nullopt;
    }
    return MakeChange(Status(), m_channel, now, Status().reason);
}

AlarmStatus MissingDataAlarm::Status() const {
    AlarmStatus status{AlarmKind::MissingData, m_index, m_phase, 0.0, 0.0, std::nullopt, {}};
    if (m_phase != AlarmPhase::Watching) {
        status.since = m_lastValue;
        status.reason = m_channel.key + " has given no value for " + Lasting(m_now.seconds - m_lastValue.seconds);
    }
    return status;
}

double DefaultMissingDataDelay(double intervalSeconds) { return std::max(30.0, 3.0 * intervalSeconds); }

Alarms::Alarms(const std::vector<ChannelInfo>& channels, const std::vector<AlarmRule>& rules,
               double missingDataDelaySeconds, Moment start) {
    for (const AlarmRule& rule : rules) {
        m_bands.emplace_back(rule, channels.at(rule.channel), start);
    }
    for (std::size_t i = 0; i < channels.size(); ++i) {
        m_missing.emplace_back(i, channels[i], missingDataDelaySeconds, start);
    }
}

std::vector<AlarmChange> Alarms::Update(const std::vector<Reading>& readings, Moment now) {
    std::vector<AlarmChange> changes;
    const auto update = [&](auto& alarm) {
        if (const auto change = alarm.Update(readings.at(alarm.Status().channel), now)) {
            changes.push_back(*change);
        }
    };
    std::ranges::for_each(m_bands, update);
    std::ranges::for_each(m_missing, update);
    return changes;
}

std::vector<AlarmStatus> Alarms::Statuses() const {
    std::vector<AlarmStatus> statuses;
    statuses.reserve(m_bands.size() + m_missing.size());
    for (const BandAlarm& alarm : m_bands) {
        statuses.push_back(alarm.Status());
    }
    for (const MissingDataAlarm& alarm : m_missing) {
        statuses.push_back(alarm.Status());
    }
    return statuses;
}

bool Alarms::AnyOn() const {
    const std::vector<AlarmStatus> statuses = Statuses();
    return std::ranges::find(statuses, AlarmPhase::On, &AlarmStatus::phase) != statuses.end();
}
