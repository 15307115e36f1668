#include "commands/MonitorCommand.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "device/Channels.h"
#include "device/Library.h"
#include "device/Session.h"
#include "device/SettingsFile.h"
#include "device/TargetSetting.h"
#include "device/Targets.h"
#include "judge/Statistics.h"
#include "oko/CDevApiInterface.h"
#include "show/Screen.h"
#include "show/Table.h"

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

std::atomic<bool> g_bStop = false;

BOOL WINAPI OnConsoleControl(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    g_bStop = true;
    return TRUE;
}

/// How the monitoring ended; told after the library is gone.
struct Outcome {
    int exitCode = kExitDone;
    std::string sentence;
    Statistics statistics;
    Seconds elapsed{};
    std::size_t notices = 0;
    std::vector<ChannelKind> kinds;  // one for each channel
};

/// Takes the notices that the library posts to this thread.
std::size_t PumpMessages() {
    std::size_t notices = 0;
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        notices += message.message == WM_COMMAND ? 1U : 0U;
        DispatchMessageW(&message);
    }
    return notices;
}

/// Pumps messages until then, or until Ctrl+C. Returns the number of notices.
std::size_t PumpUntil(Clock::time_point end) {
    constexpr std::chrono::milliseconds kSlice{50};  // so that Ctrl+C is heard soon
    std::size_t notices = PumpMessages();
    for (auto now = Clock::now(); now < end && !g_bStop; now = Clock::now()) {
        const auto wait = std::min(kSlice, std::chrono::ceil<std::chrono::milliseconds>(end - now));
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(wait.count()), QS_ALLINPUT);
        notices += PumpMessages();
    }
    return notices;
}

std::vector<TableRow> ReadRows(const std::vector<Channel>& channels, Statistics& statistics) {
    std::vector<TableRow> rows;
    std::vector<double> values;
    for (const Channel& channel : channels) {
        values.push_back(channel.readCurrent());
        const double target = channel.readTarget();
        rows.push_back({std::to_string(channel.number), channel.name, KindName(channel.kind),
                        FormatValue(values.back()), FormatValue(target), UnitOf(channel.kind), channel.readState()});
    }
    statistics.AddTable(values);
    return rows;
}

/// One table at once, one after each interval and one at the end.
void Watch(const std::vector<Channel>& channels, const MonitorOptions& options, Screen& screen, Outcome& outcome) {
    const Clock::time_point start = Clock::now();
    const auto interval = std::chrono::duration_cast<Clock::duration>(Seconds(options.intervalSeconds));
    Clock::time_point next = start;
    while (true) {
        outcome.elapsed = Clock::now() - start;
        std::vector<std::string> lines = FormatTable(ReadRows(channels, outcome.statistics));
        lines.insert(lines.begin(), "after " + FormatValue(outcome.elapsed.count()) + " s");
        screen.Show(lines);
        if (options.seconds && outcome.elapsed.count() >= *options.seconds) {
            break;
        }
        // A device slower than the interval does not pile tables up.
        next = std::max(next + interval, Clock::now());
        if (options.seconds) {
            next = std::min(next, start + std::chrono::ceil<Clock::duration>(Seconds(*options.seconds)));
        }
        outcome.notices += PumpUntil(next);
        if (g_bStop) {
            outcome.elapsed = Clock::now() - start;
            break;
        }
    }
    screen.Leave();
}

/// The reason is what the library logged last.
std::string InitFailed(const std::string& device) {
    constexpr std::ptrdiff_t kLines = 3;
    std::string sentence = "the " + device + " could not be initialised";
    const std::vector<std::string>& lines = Session::LogLines();
    const char* separator = ": ";
    for (auto line = lines.end() - std::min(kLines, std::ssize(lines)); line != lines.end(); ++line) {
        sentence += separator + *line;
        separator = " / ";
    }
    return sentence;
}

Outcome Monitor(const MonitorOptions& options) {
    const Library library(options.library);
    CDevApiInterface& device = library.Device(options.device);
    Outcome outcome;
    Screen screen;
    Session session(device, [&screen] { screen.MakeRoom(); });
    Settings settings;
    if (options.port) {
        settings.connection = L"m_iComPort " + std::to_wstring(*options.port);
    }
    if (!session.Open(settings)) {
        outcome.exitCode = kExitInitFailed;
        outcome.sentence = InitFailed(options.device);
        return outcome;
    }
    const std::vector<Channel> channels = ListChannels(device);
    std::ranges::transform(channels, std::back_inserter(outcome.kinds), &Channel::kind);
    for (const TargetSetting& target : options.targets) {
        outcome.sentence = SetTarget(channels, target);
        if (!outcome.sentence.empty()) {
            outcome.exitCode = kExitBadTarget;
            return outcome;
        }
    }
    Watch(channels, options, screen, outcome);
    return outcome;
}

void PrintSummary(const MonitorOptions& options, const Outcome& outcome) {
    const auto count = [&](ChannelKind kind) { return std::ranges::count(outcome.kinds, kind); };
    std::cout << "done: " << options.device << ", " << FormatValue(outcome.elapsed.count()) << " s, "
              << count(ChannelKind::Temperature) << " temperature, " << count(ChannelKind::Gas) << " gas and "
              << count(ChannelKind::Humidity) << " humidity channels, " << outcome.statistics.Tables() << " tables, "
              << outcome.statistics.Moved() << " of " << outcome.kinds.size() << " values moved, " << outcome.notices
              << " change notices, " << Session::LogLines().size() << " log lines\n";
}

}  // namespace

int RunMonitor(const MonitorOptions& options) {
    SetConsoleCtrlHandler(OnConsoleControl, TRUE);
    const Outcome outcome = Monitor(options);
    if (outcome.exitCode == kExitDone) {
        PrintSummary(options, outcome);
    } else {
        std::cerr << "oko-host: " << outcome.sentence << "\n";
    }
    return outcome.exitCode;
}
