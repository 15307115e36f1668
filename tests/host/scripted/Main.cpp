// Serves a made-up watch as a page, for the tests that come with clients of their own: Prometheus, and the examples of
// the pages. Prints the address of the page and its token, and goes on until its input ends. Reads lines from its
// input: "silent" and "answering" say what the device does from now on.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <thread>

#include "MadeSnapshot.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "page/LivePage.h"

namespace {

std::int64_t NowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

/// The device: its targets, and what is read from it.
class Device {
 public:
    double SetTarget(double value) {
        const std::lock_guard lock(m_mutex);
        m_dTarget = std::clamp(value, 0.0, 20.0);
        return m_dTarget;
    }

    Snapshot Read(std::uint64_t row, bool isSilent) {
        const std::lock_guard lock(m_mutex);
        Snapshot snapshot = MadeSnapshot(row);
        snapshot.when.utcMs = NowMs();
        snapshot.statuses[0].reading.current = 38.5 + 0.2 * std::sin(static_cast<double>(row) / 10.0);
        snapshot.statuses[0].reading.state = ChannelState::Within;
        snapshot.statuses[1].reading = {m_dTarget, m_dTarget, ChannelState::Within, false};
        snapshot.statuses[2].reading = {90.0, std::nullopt, ChannelState::None, false};
        snapshot.alarms[1] = {AlarmKind::MissingData, 1, AlarmPhase::Watching, 0.0, 0.0, std::nullopt, ""};
        if (isSilent) {
            snapshot.live = false;
            snapshot.reason = "the device does not answer";
            snapshot.alarms[1].phase = AlarmPhase::On;
            for (ChannelStatus& status : snapshot.statuses) {
                status.reading = {std::nullopt, std::nullopt, ChannelState::NoAnswer, false};
            }
        }
        return snapshot;
    }

 private:
    std::mutex m_mutex;
    double m_dTarget = 5.0;
};

}  // namespace

int main(int argc, char** argv) {
    Device device;
    std::optional<LivePage> page;
    LivePage::Options options;
    options.port = argc > 1 ? static_cast<std::uint16_t>(std::atoi(argv[1])) : std::uint16_t{0};
    options.token = "0123456789abcdef";
    options.allowSet = true;
    page.emplace(options, [&](std::uint64_t request, const std::string&, double value) {
        page->TargetDone(request, device.SetTarget(value));
    });
    if (const auto problem = page->Start()) {
        std::cerr << *problem << "\n";
        return 1;
    }
    std::cout << page->Url() << " " << options.token << std::endl;

    std::atomic<bool> isSilent = false;
    std::jthread watch([&](const std::stop_token& stop) {
        page->Publish(Event{1, {NowMs(), 0.0}, EventKind::Started, "", "OKO-Lab bold line"});
        for (std::uint64_t row = 1; !stop.stop_requested(); ++row) {
            page->Publish(device.Read(row, isSilent));
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
    });
    for (std::string line; std::getline(std::cin, line);) {
        isSilent = line.starts_with("silent");
    }
    watch.request_stop();
    watch.join();
    page->Stop();
    return 0;
}
