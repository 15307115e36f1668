#include "commands/WatchRun.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "ExitCode.h"
#include "commands/WatchRequest.h"
#include "device/DeviceThread.h"
#include "device/SettingsFile.h"
#include "judge/Alarm.h"
#include "judge/AlarmRule.h"
#include "judge/Statistics.h"
#include "judge/Watch.h"
#include "model/DeviceMessage.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "platform/Interrupt.h"
#include "platform/Now.h"
#include "platform/ReplyTimeout.h"
#include "show/Summary.h"
#include "text/Duration.h"
#include "text/Text.h"

namespace {

constexpr double kTickSeconds = 0.1;  // so that Ctrl+C and a silent device are noticed soon

/// A call makes up to two exchanges, and the library gives up each of them by itself.
double AnswerWithin(const WatchRequest& request) {
    constexpr double kUsual = 10.0;
    if (request.answerWithinSeconds > 0.0) {
        return request.answerWithinSeconds;
    }
    const auto replyTimeout = LibraryReplyTimeout();
    return replyTimeout ? 2.0 * *replyTimeout + 1.0 : kUsual;
}

}  // namespace

WatchRun::WatchRun(WatchRequest request)
    : m_request(std::move(request)),
      m_dAnswerWithin(AnswerWithin(m_request)),
      m_watch({m_request.device.intervalSeconds, m_dAnswerWithin}) {}

WatchRun::~WatchRun() = default;

void WatchRun::AddSink(OnRow onRow, OnEvent onEvent) { m_sinks.emplace_back(std::move(onRow), std::move(onEvent)); }

int WatchRun::Open() {
    m_device = std::make_unique<DeviceThread>(m_request.device, m_messages);
    const double begun = ::Now().seconds;
    const double within = m_request.seconds
                              ? std::min(m_request.startWithinSeconds, *m_request.seconds + m_dAnswerWithin)
                              : m_request.startWithinSeconds;
    while (!m_watch.IsOpen() && m_nExitCode == kExitDone) {
        Pump(kTickSeconds);
        if (Interrupted()) {
            m_nExitCode = kExitInterrupted;
            m_sentence = "ended while the device was being started";
        } else if (!m_watch.IsOpen() && m_nExitCode == kExitDone && ::Now().seconds - begun > within) {
            m_nExitCode = kExitNoAnswer;
            m_sentence = "the device was not started within " + FormatDuration(within) + ": its server does not answer";
        }
    }
    if (m_nExitCode == kExitDone) {
        AddEvent(EventKind::Started, Now().device.name);
    }
    return m_nExitCode;
}

bool WatchRun::RunUntil(const std::function<bool()>& isEnough) {
    while (!isEnough()) {
        if (Interrupted() || m_bClosed) {
            return false;
        }
        Pump(kTickSeconds);
    }
    return true;
}

void WatchRun::Close() {
    m_bOver = true;
    m_device->AskToClose();
    const double end = ::Now().seconds + m_dAnswerWithin + 10.0 * LibraryReplyTimeout().value_or(0.0);
    while (!m_bClosed && ::Now().seconds < end) {
        Pump(kTickSeconds);
    }
    if (!m_bClosed) {
        m_device->Leave();
        m_bLeft = true;
    }
    AddEvent(EventKind::Ended, m_bLeft ? "the device did not answer and was left without Close" : "");
}

void WatchRun::SetTarget(std::size_t channel, double value, OnTargetSet onSet) {
    m_awaited[++m_nRequests] = std::move(onSet);
    m_device->SetTarget(m_nRequests, channel, value);
}

std::optional<device_message::TargetSet> WatchRun::SetTargetAndWait(std::size_t channel, double value) {
    // Shared: the answer may come when nobody waits for it any more.
    const auto answer = std::make_shared<std::optional<device_message::TargetSet>>();
    SetTarget(channel, value, [answer](const device_message::TargetSet& set) { *answer = set; });
    RunUntil([&] { return answer->has_value() || IsSilent(); });
    return *answer;
}

void WatchRun::AddEvent(EventKind kind, const std::string& text, const std::string& channel) {
    Tell({.id = 0, .when = ::Now(), .kind = kind, .channel = channel, .text = text});
}

void WatchRun::WatchFor(const std::vector<AlarmRule>& rules) {
    const double delay = m_request.missingWithinSeconds > 0.0 ? m_request.missingWithinSeconds
                                                              : DefaultMissingDataDelay(Now().intervalSeconds);
    m_alarms.emplace(Now().channels, rules, delay, Now().when);
    m_watch.SetAlarms(m_alarms->Statuses());
    m_statistics.emplace(Now().channels, rules);
    m_opened = Now().when;
}

Summary WatchRun::MakeSummary() const {
    const double seconds = Now().when.seconds - m_opened.seconds;
    return {Now().device, seconds, Now().channels, m_statistics.value_or(Statistics(Now().channels))};
}

void WatchRun::Tell(Event event) {
    event.id = TakeEventId();
    for (const auto& [onRow, onEvent] : m_sinks) {
        onEvent(event);
    }
}

void WatchRun::Pump(double waitSeconds) {
    if (const auto message = m_messages->PopFor(waitSeconds)) {
        Take(*message);
    }
    PassOn(m_watch.Tick(::Now()));
}

void WatchRun::Take(const DeviceMessage& message) {
    if (m_onMessage) {
        m_onMessage(message);
    }
    const bool row = m_watch.Take(message);
    PassOn(row);
    if (const auto* failed = std::get_if<device_message::Failed>(&message.what)) {
        m_nExitCode = failed->exitCode;
        m_sentence = failed->sentence;
    } else if (const auto* set = std::get_if<device_message::TargetSet>(&message.what)) {
        if (const auto awaited = m_awaited.extract(set->request)) {
            awaited.mapped()(*set);
        }
    } else if (const auto* closed = std::get_if<device_message::Closed>(&message.what)) {
        m_nNotices = closed->notices;
        m_bClosed = true;
    }
}

/// Events first: what led to a row stands above it.
void WatchRun::PassOn(bool row) {
    std::ranges::for_each(m_watch.TakeEvents(), [this](const Event& event) { Tell(event); });
    if (!row || m_bOver) {
        return;
    }
    Judge();
    for (const auto& [onRow, onEvent] : m_sinks) {
        onRow(Now());
    }
}

void WatchRun::Judge() {
    if (!m_alarms || !m_statistics) {
        return;
    }
    std::vector<Reading> readings;
    std::ranges::transform(Now().statuses, std::back_inserter(readings), &ChannelStatus::reading);
    m_statistics->Update(readings, Now().when);
    const std::vector<AlarmChange> changes = m_alarms->Update(readings, Now().when);
    m_watch.SetAlarms(m_alarms->Statuses());
    std::ranges::for_each(changes, [this](const AlarmChange& change) { Tell(change.event); });
    if (m_onAlarms && !changes.empty()) {
        m_onAlarms(changes);
    }
}

Readiness ReadSettingsInto(WatchRequest& request) {
    request.device.settings =
        ReadSettings(std::filesystem::path(std::u8string(request.settingsFile.begin(), request.settingsFile.end())));
    if (request.port) {
        request.device.settings.connection = ConnectionText(*request.port);
    }
    if (request.device.device == "incubator" && !PortOf(request.device.settings)) {
        return {kExitNoPort,
                "no COM port is known for the incubator: \"oko-host connect --device incubator\" finds or asks it and "
                "keeps it in " +
                    request.settingsFile + "; or name it, as in --port 3"};
    }
    return {};
}

std::vector<std::string> Announcement(const WatchRequest& request) {
    if (request.device.device != "incubator") {
        return {"simulator: a simulated incubator, built into the library; nothing real is touched"};
    }
    const std::string port = std::to_string(PortOf(request.device.settings).value_or(0));
    const std::string alarms = ToUtf8(request.device.settings.alarms);
    return {"incubator on COM" + port + ", by way of the OKO-Control Server (settings: " + request.settingsFile + ")",
            "  starting it sends: \"mode\", \"comport\" with " + port +
                " and \"checkcon\" to products 7 to 17, then \"start 1\"",
            alarms.empty() ? "  alarm tolerances: none are stored, none are sent; the server keeps its own"
                           : "  alarm tolerances, sent with \"alarm\" as they are stored: " + alarms,
            "  ending it sends: \"start 0\", and \"connect ... 0\" to each product"};
}
