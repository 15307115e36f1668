#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "device/MessageQueue.h"
#include "device/SettingsFile.h"
#include "model/DeviceMessage.h"

/// Which device, and what it is given before it is read.
struct DeviceRequest {
    std::filesystem::path library;
    std::string device = "simulator";  // or "incubator"
    Settings settings;
    double intervalSeconds = 1.0;  // between the beginnings of two rounds
    bool readChannels = true;      // false: no rounds, only Init and Close
};

/// The one thread that calls into the library: it loads it, initialises the device, reads all channels round after
/// round, sets targets and closes. A call that does not return keeps this thread and nobody else; the owner sees it by
/// the messages that do not come, and may go without it.
class DeviceThread {
 public:
    using Queue = MessageQueue<DeviceMessage>;

    DeviceThread(DeviceRequest request, std::shared_ptr<Queue> messages);

    /// Asks the thread to end and waits for it, unless it was left.
    ~DeviceThread();
    DeviceThread(const DeviceThread&) = delete;
    DeviceThread& operator=(const DeviceThread&) = delete;

    /// Sets a target before the next read; TargetSet tells what became of it.
    void SetTarget(std::uint64_t request, std::size_t channel, double value);

    /// The thread ends after the call that it is in, with Close; Closed tells of it.
    void AskToClose();

    /// Nobody waits for the thread any more. The program must end without running destructors of what it uses.
    void Leave();

 private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
    std::thread m_thread;
};
