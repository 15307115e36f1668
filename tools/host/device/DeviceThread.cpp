#include "device/DeviceThread.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ExitCode.h"
#include "device/Channels.h"
#include "device/Library.h"
#include "device/Session.h"
#include "device/SettingsFile.h"
#include "model/DeviceMessage.h"
#include "oko/CDevApiInterface.h"
#include "platform/Now.h"
#include "platform/ThreadMessages.h"

namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

struct DeviceThread::Shared {
    struct TargetRequest {
        std::uint64_t request;
        std::size_t channel;
        double value;
    };

    DeviceRequest request;
    std::shared_ptr<Queue> messages;

    std::mutex mutex;
    std::condition_variable changed;
    std::deque<TargetRequest> targets;
    bool close = false;

    void Run();
    device_message::Opened Describe(const Library& library, const std::vector<Channel>& channels) const;
    void ReadUntilClosing(std::vector<Channel>& channels);
    void ReadRound(std::vector<Channel>& channels);
    void ReadChannel(std::size_t index, Channel& channel);
    void SetTargets(std::vector<Channel>& channels);

    bool Closing() {
        const std::lock_guard lock(mutex);
        return close;
    }
    void Tell(decltype(DeviceMessage::what) what) { messages->Push({Now(), std::move(what)}); }

    std::size_t notices = 0;
};

namespace {

/// A call into the device, and how long it took.
template <class Call>
auto Timed(std::vector<double>& seconds, const Call& call) {
    const auto begun = Clock::now();
    const auto result = call();
    seconds.push_back(std::chrono::duration<double>(Clock::now() - begun).count());
    return result;
}

/// The reason is what the library logged last.
std::string InitFailed(const std::string& device, const std::vector<std::string>& lines) {
    constexpr std::ptrdiff_t kLines = 3;
    std::string sentence = "the " + device + " could not be initialised";
    const char* separator = ": ";
    for (auto line = lines.end() - std::min(kLines, std::ssize(lines)); line != lines.end(); ++line) {
        sentence += separator + *line;
        separator = " / ";
    }
    return sentence;
}

}  // namespace

void DeviceThread::Shared::ReadChannel(std::size_t index, Channel& channel) {
    Tell(device_message::CallBegun{index});
    device_message::ChannelRead read{index, {}, {}};
    const Answer current = Timed(read.callSeconds, channel.readCurrent);
    Answer target;
    // A server that just refused to answer is not asked twice: each question may take its whole time-out.
    if (channel.info.canSetTarget && current.answered) {
        Tell(device_message::CallBegun{index});
        target = Timed(read.callSeconds, channel.readTarget);
    }
    read.reading = MakeReading(channel.info, current, target, channel.bandState());
    read.reading.airMode = channel.airMode();
    Tell(std::move(read));
}

void DeviceThread::Shared::SetTargets(std::vector<Channel>& channels) {
    for (;;) {
        std::optional<TargetRequest> next;
        {
            const std::lock_guard lock(mutex);
            if (targets.empty()) {
                return;
            }
            next = targets.front();
            targets.pop_front();
        }
        const Channel& channel = channels[next->channel];
        Tell(device_message::CallBegun{next->channel});
        device_message::TargetSet result{next->request, next->channel, next->value, channel.setTarget(next->value), {}};
        if (result.accepted) {
            Tell(device_message::CallBegun{next->channel});
            result.taken = channel.readTarget().number;
        }
        Tell(result);
    }
}

void DeviceThread::Shared::ReadRound(std::vector<Channel>& channels) {
    for (std::size_t i = 0; i < channels.size() && !Closing(); ++i) {
        SetTargets(channels);
        ReadChannel(i, channels[i]);
        notices += TakeThreadMessages();
    }
    if (!Closing()) {
        Tell(device_message::RoundDone{});
    }
}

device_message::Opened DeviceThread::Shared::Describe(const Library& library,
                                                      const std::vector<Channel>& channels) const {
    const bool simulated = request.device == "simulator";
    const auto texts = library.Texts(DeviceIndex(request.device));
    device_message::Opened opened{{.name = texts ? texts->name : request.device, .simulated = simulated, .port = {}},
                                  {}};
    if (!simulated) {
        opened.device.port = PortOf(request.settings);
    }
    for (const Channel& channel : channels) {
        opened.channels.push_back(channel.info);
    }
    return opened;
}

void DeviceThread::Shared::ReadUntilClosing(std::vector<Channel>& channels) {
    constexpr std::chrono::milliseconds kSlice{50};  // what the library posts is to be taken soon
    const auto interval =
        std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(request.intervalSeconds));
    Clock::time_point next = Clock::now();
    while (!Closing()) {
        SetTargets(channels);
        if (request.readChannels && Clock::now() >= next) {
            ReadRound(channels);
            next = std::max(next + interval, Clock::now());  // a slow device does not pile rounds up
        }
        notices += TakeThreadMessages();
        const auto end = request.readChannels ? std::min(next, Clock::now() + kSlice) : Clock::now() + kSlice;
        std::unique_lock lock(mutex);
        changed.wait_until(lock, end, [this] { return close || !targets.empty(); });
    }
}

void DeviceThread::Shared::Run() {
    try {
        const Library library(request.library);
        CDevApiInterface& device = library.Device(request.device);
        std::vector<std::string> linesOfInit;
        bool initialising = true;
        Session session(device, [&](const std::string& line) {
            if (initialising) {
                linesOfInit.push_back(line);
            }
            Tell(device_message::LogLine{line});
        });
        Tell(device_message::CallBegun{});
        if (!session.Open(request.settings)) {
            Tell(device_message::Failed{kExitInitFailed, InitFailed(request.device, linesOfInit)});
            return;
        }
        initialising = false;
        std::vector<Channel> channels = ListChannels(device);
        Tell(Describe(library, channels));
        ReadUntilClosing(channels);
        Tell(device_message::CallBegun{});
    } catch (const LibraryError& error) {
        Tell(device_message::Failed{kExitNoLibrary, error.what()});
    }
}

DeviceThread::DeviceThread(DeviceRequest request, std::shared_ptr<Queue> messages)
    : m_shared(std::make_shared<Shared>()) {
    m_shared->request = std::move(request);
    m_shared->messages = std::move(messages);
    m_thread = std::thread([shared = m_shared] {
        shared->Run();
        shared->Tell(device_message::Closed{shared->notices});
    });
}

DeviceThread::~DeviceThread() {
    if (m_thread.joinable()) {
        AskToClose();
        m_thread.join();
    }
}

void DeviceThread::SetTarget(std::uint64_t request, std::size_t channel, double value) {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->targets.push_back({request, channel, value});
    m_shared->changed.notify_all();
}

void DeviceThread::AskToClose() {
    const std::lock_guard lock(m_shared->mutex);
    m_shared->close = true;
    m_shared->changed.notify_all();
}

void DeviceThread::Leave() { m_thread.detach(); }
