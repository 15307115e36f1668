#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/DurationHistogram.h"
#include "model/Moment.h"
#include "model/Reading.h"

/// The device that is watched.
struct DeviceInfo {
    std::string name;  // "OKO-Lab bold line Simulator"
    bool simulated = false;
    std::optional<int> port;  // the COM port; none for the simulator
};

enum class AlarmKind { OutOfBand, MissingData };

/// Unarmed: its value has not settled yet. Pending: it is wrong, but not for long enough.
enum class AlarmPhase { Unarmed, Watching, Pending, On };

struct AlarmStatus {
    AlarmKind kind = AlarmKind::OutOfBand;
    std::size_t channel = 0;  // index into Snapshot::channels
    AlarmPhase phase = AlarmPhase::Unarmed;
    double low = 0.0;  // the band that it watches now; both 0 for missing data
    double high = 0.0;
    std::optional<Moment> since;  // of Pending and On
    std::string reason;           // for people: "CO2 is 6.20 %, above 5.50 %"; empty unless Pending or On
};

/// A channel now.
struct ChannelStatus {
    Reading reading;                   // what is shown: never older than what the device may take to answer
    std::optional<double> ageSeconds;  // of the last value that came, shown or not; none: none came yet
    std::uint64_t reads = 0;
    std::uint64_t failedReads = 0;  // of these
};

/// Everything that a table, a page, a file or a metric shows: one instant of the watch. A plain value, copied freely.
struct Snapshot {
    Moment when;
    std::uint64_t row = 0;  // counts the rows of the log from 1; 0 before the first
    DeviceInfo device;
    double intervalSeconds = 1.0;  // between two rows
    bool live = false;             // values are coming; else `reason` says why not
    std::string reason;
    std::vector<ChannelInfo> channels;
    std::vector<ChannelStatus> statuses;  // one for each channel
    std::vector<AlarmStatus> alarms;
    DurationHistogram exchanges;       // how long reads took
    std::uint64_t logWriteErrors = 0;  // rows and events that the log's file did not take
};

/// One for each channel.
std::vector<Reading> ReadingsOf(const Snapshot& snapshot);
