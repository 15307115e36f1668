#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "judge/AlarmRule.h"
#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

/// An alarm that came or went. The event has no number yet: whoever lists it gives it one.
struct AlarmChange {
    Event event;
    AlarmStatus status;  // after the change
};

/// Whether one channel's value lies where it should.
///
/// Unarmed until the value was in its band once, so that a warm-up is no alarm; a new target unarms a band that moves
/// with it. Armed, the alarm is pending while the value is outside, and on when it was outside for the rule's delay. It
/// goes off when the value is inside by the hysteresis.
///
/// Missing data is neither inside nor outside: everything stays as it was, and the time without data does not count
/// towards the delay. What was counted before is kept, else a device that fails to answer now and then would never
/// raise an alarm. That data is missing is an alarm of its own.
class BandAlarm {
 public:
    /// The status carries the rule's channel as its index.
    BandAlarm(AlarmRule rule, ChannelInfo channel, Moment start);

    /// Takes one round's reading; tells when the alarm goes on or off.
    std::optional<AlarmChange> Update(const Reading& reading, Moment now);

    AlarmStatus Status() const;

 private:
    std::optional<AlarmChange> Change(bool wasOn, Moment now) const;
    void TakeTarget(const std::optional<double>& target, Moment now);
    void ArmInTime(Moment now);
    void Judge(double value, const Band& band, Moment now);
    bool IsInsideByHysteresis(double value, const Band& band) const;
    std::string Reason() const;
    std::string OnText() const;
    std::string OffText(Moment now) const;

    AlarmRule m_rule;
    ChannelInfo m_channel;
    Moment m_watchedSince;  // the start, or the last new target
    std::optional<double> m_target;
    std::optional<Band> m_band;
    AlarmPhase m_phase = AlarmPhase::Unarmed;
    bool m_settled = false;             // was in its band since it is watched
    Moment m_since;                     // of Pending and On: since when it is outside
    double m_outside = 0.0;             // s, with data
    double m_value = 0.0;               // the last one
    std::optional<Moment> m_lastRound;  // when it came; none: the last round brought no value
};

/// Whether a channel gives values at all. Armed from the start: an alarm when the last value is older than the delay.
class MissingDataAlarm {
 public:
    MissingDataAlarm(std::size_t index, ChannelInfo channel, double delaySeconds, Moment start);

    std::optional<AlarmChange> Update(const Reading& reading, Moment now);

    AlarmStatus Status() const;

 private:
    std::size_t m_index;
    ChannelInfo m_channel;
    double m_delaySeconds;
    Moment m_lastValue;  // or the start
    Moment m_now;
    AlarmPhase m_phase = AlarmPhase::Watching;
};

/// How long a channel may give no value when nobody says: half a minute, or three rounds where these take longer.
double DefaultMissingDataDelay(double intervalSeconds);

/// All alarms of a device: one for each rule, and one for missing data for each channel.
class Alarms {
 public:
    Alarms(const std::vector<ChannelInfo>& channels, const std::vector<AlarmRule>& rules,
           double missingDataDelaySeconds, Moment start);

    /// Takes one round's readings, one for each channel.
    std::vector<AlarmChange> Update(const std::vector<Reading>& readings, Moment now);

    std::vector<AlarmStatus> Statuses() const;

    bool AnyOn() const;

 private:
    std::vector<BandAlarm> m_bands;
    std::vector<MissingDataAlarm> m_missing;
};
