#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Snapshot.h"

struct WatchRules {
    double intervalSeconds = 1.0;
    double answerWithinSeconds = 10.0;  // a call that takes longer counts as no answer, until it returns
};

/// Makes of what the device thread tells, and of the time that passes, one snapshot of the device, and the events.
/// Knows no clock: each call brings its moment, none earlier than the one before.
class Watch {
 public:
    explicit Watch(WatchRules rules) : m_rules(rules) { m_snapshot.intervalSeconds = rules.intervalSeconds; }

    /// Takes a message. True when a row is complete: the snapshot is to be kept.
    bool Take(const DeviceMessage& message);

    /// Lets time pass. True when a row is due although the device keeps silent: one that holds no values.
    bool Tick(Moment now);

    const Snapshot& Now() const noexcept { return m_snapshot; }

    /// Where the alarms of the snapshot are kept by their owner.
    void SetAlarms(std::vector<AlarmStatus> alarms) { m_snapshot.alarms = std::move(alarms); }

    /// How many rows a log could not take, for the snapshot.
    void SetLogWriteErrors(std::uint64_t errors) noexcept { m_snapshot.logWriteErrors = errors; }

    /// The events since the last call, without numbers.
    std::vector<Event> TakeEvents();

    /// Whether the device was opened, and whether a call into it has taken too long and has not returned.
    bool IsOpen() const noexcept { return m_bOpen; }
    bool IsSilent() const noexcept { return m_bSilent; }

    /// Whether a channel was read for a row that is not complete yet.
    bool IsWithinRound() const noexcept { return m_bWithinRound; }

 private:
    struct Call {
        std::optional<std::size_t> channel;
        Moment begun;
    };

    void Handle(const device_message::Opened& opened);
    void Handle(const device_message::ChannelRead& read);
    void NoteTarget(std::size_t channel, std::optional<double> target);
    void JudgeLink();
    void ForgetOldValues();
    void Tell(EventKind kind, std::string text, std::string channel = {});

    WatchRules m_rules;
    Snapshot m_snapshot;
    std::vector<Event> m_events;
    std::vector<std::optional<Moment>> m_answered;  // when each channel last gave a value
    std::vector<std::optional<double>> m_targets;   // the last ones known, shown or not
    std::vector<std::optional<bool>> m_airModes;
    std::optional<Call> m_call;  // the one that is under way
    std::optional<Moment> m_roundBegun;
    bool m_bWithinRound = false;
    double m_dRoundSeconds = 0.0;  // how long the last whole round took
    Moment m_lastRow;
    bool m_bOpen = false;
    bool m_bSilent = false;
    bool m_bLost = false;  // told as an event
};
