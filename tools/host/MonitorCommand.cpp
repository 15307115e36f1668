#include "MonitorCommand.h"

#include <windows.h>

#include <algorithm>
#include <atomic>
#include <iostream>

#include "Channels.h"
#include "ExitCode.h"
#include "Library.h"
#include "Screen.h"
#include "Session.h"
#include "Table.h"
#include "TargetSetting.h"

namespace {

std::atomic<bool> g_bStop = false;

BOOL WINAPI OnConsoleControl(DWORD event) {
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    g_bStop = true;
    return TRUE;
}

/// What the summary tells.
struct Statistics {
    std::size_t ticks = 0;
    std::size_t notices = 0;
    std::vector<double> firstValues;
    std::vector<double> lastValues;
};

/// Takes the notices that the library posts to this thread.
std::size_t PumpMessages() {
    std::size_t notices = 0;
    MSG message{};
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        notices += message.message == WM_COMMAND ? 1U : 0U;
        DispatchMessageW(&message);
    }
    return notices;
}

/// Sets what the user asked for. False, with a line why, when that cannot be done.
bool SetTarget(const std::vector<Channel>& channels, const std::string& text) {
    const auto setting = ParseTargetSetting(text);
    if (!setting) {
        std::cerr << "oko-host: \"" << text << "\" is not of the form NAME=VALUE\n";
        return false;
    }
    const auto found = std::ranges::find_if(channels, [&](const Channel& channel) {
        return channel.name == setting->name && (setting->kind.empty() || setting->kind == KindName(channel.kind));
    });
    if (found == channels.end()) {
        std::cerr << "oko-host: no channel is called \"" << setting->name << "\"\n";
        return false;
    }
    if (!found->setTarget(setting->value)) {
        std::cerr << "oko-host: the target of \"" << setting->name << "\" could not be set\n";
        return false;
    }
    return true;
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
    if (statistics.firstValues.empty()) {
        statistics.firstValues = values;
    }
    statistics.lastValues = values;
    return rows;
}

/// Waits a tick's length, so that Ctrl+C is heard soon.
void WaitTick(unsigned milliseconds) {
    constexpr unsigned kSliceMs = 50;
    for (unsigned waited = 0; waited < milliseconds && !g_bStop; waited += kSliceMs) {
        Sleep(std::min(kSliceMs, milliseconds - waited));
    }
}

Statistics Watch(const std::vector<Channel>& channels, const MonitorOptions& options) {
    Screen screen;
    Statistics statistics;
    const ULONGLONG start = GetTickCount64();
    while (!g_bStop) {
        const ULONGLONG elapsedMs = GetTickCount64() - start;
        std::vector<std::string> lines = FormatTable(ReadRows(channels, statistics));
        lines.insert(lines.begin(), "after " + FormatValue(static_cast<double>(elapsedMs) / 1000.0) + " s");
        screen.Show(lines);
        ++statistics.ticks;
        statistics.notices += PumpMessages();
        if (options.durationMs != 0 && elapsedMs + options.intervalMs > options.durationMs) {
            break;
        }
        WaitTick(options.intervalMs);
    }
    return statistics;
}

std::size_t CountMoved(const Statistics& statistics) {
    std::size_t moved = 0;
    for (std::size_t i = 0; i < statistics.firstValues.size(); ++i) {
        moved += statistics.firstValues[i] != statistics.lastValues[i] ? 1U : 0U;
    }
    return moved;
}

void PrintSummary(const MonitorOptions& options, const std::vector<Channel>& channels, const Statistics& statistics) {
    const auto count = [&](ChannelKind kind) { return std::ranges::count(channels, kind, &Channel::kind); };
    std::cout << "done: " << options.device << ", " << count(ChannelKind::Temperature) << " temperature, "
              << count(ChannelKind::Gas) << " gas and " << count(ChannelKind::Humidity) << " humidity channels, "
              << statistics.ticks << " tables, " << CountMoved(statistics) << " of " << channels.size()
              << " values moved, " << statistics.notices << " change notices, " << Session::LogLines().size()
              << " log lines\n";
}

int Monitor(CDevApiInterface& device, const MonitorOptions& options) {
    Session session(device);
    Settings settings;
    if (options.port) {
        settings.connection = L"m_iComPort " + std::to_wstring(*options.port);
    }
    if (!session.Open(settings)) {
        std::cerr << "oko-host: the " << options.device << " could not be initialised";
        if (!Session::LogLines().empty()) {
            std::cerr << ": " << Session::LogLines().back();
        }
        std::cerr << "\n";
        return kExitInitFailed;
    }
    const std::vector<Channel> channels = ListChannels(device);
    for (const std::string& target : options.targets) {
        if (!SetTarget(channels, target)) {
            return kExitBadTarget;
        }
    }
    const Statistics statistics = Watch(channels, options);
    PrintSummary(options, channels, statistics);
    return kExitDone;
}

}  // namespace

int RunMonitor(const MonitorOptions& options) {
    SetConsoleCtrlHandler(OnConsoleControl, TRUE);
    const Library library(options.library);
    return Monitor(library.Device(options.device == "simulator" ? oko::kSimulatorDevice : oko::kRealDevice), options);
}
