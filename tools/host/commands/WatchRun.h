#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "commands/WatchRequest.h"
#include "device/DeviceThread.h"
#include "judge/Alarm.h"
#include "judge/AlarmRule.h"
#include "judge/Statistics.h"
#include "judge/Watch.h"
#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Snapshot.h"
#include "show/Summary.h"

/// One watch over a device, from its settings to Close: the device thread reads, this thread (the main one) takes what
/// it tells, judges it and hands rows and events to whoever keeps or shows them. The main thread never waits for the
/// device: the time, the log and Ctrl+C go on while the server keeps silent.
class WatchRun {
 public:
    using OnRow = std::function<void(const Snapshot&)>;
    using OnEvent = std::function<void(const Event&)>;
    using OnTargetSet = std::function<void(const device_message::TargetSet&)>;

    explicit WatchRun(WatchRequest request);
    ~WatchRun();
    WatchRun(const WatchRun&) = delete;
    WatchRun& operator=(const WatchRun&) = delete;

    /// They are called in the order in which they were added, on the main thread.
    void AddSink(OnRow onRow, OnEvent onEvent);

    /// Called with the alarms that came or went with a row, after their events, before the row goes to the sinks.
    void OnAlarms(std::function<void(const std::vector<AlarmChange>&)> act) { m_onAlarms = std::move(act); }
    /// Called with all that the device thread tells, before it is judged.
    void SetMessageSink(std::function<void(const DeviceMessage&)> onMessage) { m_onMessage = std::move(onMessage); }

    /// Starts the device and waits until it is open. Else the exit code; Sentence() tells the user why.
    int Open();

    /// Judges each row by these rules from now on; each alarm that comes or goes is an event.
    void WatchFor(const std::vector<AlarmRule>& rules);

    /// Goes on until this returns true (asked after each message and at least ten times a second), Ctrl+C, or the
    /// device is gone. True when it was the function that ended it.
    bool RunUntil(const std::function<bool()>& isEnough);

    /// Closes the device; a call that does not return ends the waiting after the time for an answer, and the device is
    /// left as it is. Adds the event of the end. To be called once, whether or not Open went well.
    void Close();

    /// Asks for a target; the answer comes while RunUntil or Close runs, or never.
    void SetTarget(std::size_t channel, double value, OnTargetSet onSet);

    /// The same, and waits for the answer. None when a call takes too long, at Ctrl+C, or when the device is gone.
    std::optional<device_message::TargetSet> SetTargetAndWait(std::size_t channel, double value);

    /// Adds an event of this program's own.
    void AddEvent(EventKind kind, const std::string& text, const std::string& channel = {});

    /// The number of the next event, for one that is not given to all sinks.
    std::uint64_t TakeEventId() noexcept { return ++m_nEvents; }

    const Snapshot& Now() const noexcept { return m_watch.Now(); }
    bool IsSilent() const noexcept { return m_watch.IsSilent(); }  // a call takes too long
    bool IsWithinRound() const noexcept { return m_watch.IsWithinRound(); }

    /// How many rows a log could not take; the snapshots tell it.
    void SetLogWriteErrors(std::uint64_t errors) noexcept { m_watch.SetLogWriteErrors(errors); }

    /// What the watch was like until now; of an open device.
    Summary MakeSummary() const;

    const WatchRequest& Request() const noexcept { return m_request; }
    const std::string& Sentence() const noexcept { return m_sentence; }
    std::size_t Notices() const noexcept { return m_nNotices; }
    double AnswerWithinSeconds() const noexcept { return m_dAnswerWithin; }

    /// A call into the device did not return: the program must end by EndNow.
    bool WasLeft() const noexcept { return m_bLeft; }

 private:
    void Pump(double waitSeconds);
    void Take(const DeviceMessage& message);
    void PassOn(bool row);
    void Judge();
    void Tell(Event event);

    WatchRequest m_request;
    double m_dAnswerWithin;
    std::shared_ptr<DeviceThread::Queue> m_messages = std::make_shared<DeviceThread::Queue>();
    std::unique_ptr<DeviceThread> m_device;
    Watch m_watch;
    std::optional<Alarms> m_alarms;
    std::optional<Statistics> m_statistics;
    Moment m_opened;
    std::vector<std::pair<OnRow, OnEvent>> m_sinks;
    std::function<void(const std::vector<AlarmChange>&)> m_onAlarms;
    std::function<void(const DeviceMessage&)> m_onMessage;
    std::map<std::uint64_t, OnTargetSet> m_awaited;
    std::uint64_t m_nRequests = 0;
    std::uint64_t m_nEvents = 0;
    std::string m_sentence;
    int m_nExitCode = 0;
    std::size_t m_nNotices = 0;
    bool m_bOver = false;    // rows that are still under way count no more: the end was judged without them
    bool m_bClosed = false;  // the device thread is done
    bool m_bLeft = false;
};

/// What the request names once the settings file is read: the connection and the alarm tolerances. Returns an exit code
/// and the sentence for the user when an incubator's port is not known.
struct Readiness {
    int exitCode = 0;
    std::string sentence;
};
Readiness ReadSettingsInto(WatchRequest& request);

/// What is said before the device is touched: which it is, and what starting and ending it will send.
std::vector<std::string> Announcement(const WatchRequest& request);
