#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "judge/AlarmRule.h"
#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "model/Reading.h"

/// What one channel did while it was watched.
struct ChannelStatistics {
    std::uint64_t reads = 0;
    std::uint64_t failedReads = 0;  // of these: no value came
    double min = 0.0;               // the three are 0 until a value came
    double mean = 0.0;
    double max = 0.0;
    bool moved = false;          // showed two different values
    double judgedSeconds = 0.0;  // with values, and a band to hold them against
    double inBandSeconds = 0.0;  // of these

    std::uint64_t Values() const { return reads - failedReads; }

    /// From 0 to 1; nothing where there was no band or no time.
    std::optional<double> ShareInBand() const;
};

/// What a watched device did, for the summary. The band is the one of the channel's alarm rule, else that of its
/// tolerances around its target. A value counts from its round to the next one, unless that brings none: time without
/// data is not judged.
class Statistics {
 public:
    explicit Statistics(std::vector<ChannelInfo> channels, const std::vector<AlarmRule>& rules = {});

    /// Takes one round's readings, one for each channel.
    void Update(const std::vector<Reading>& readings, Moment now);

    const std::vector<ChannelStatistics>& Channels() const { return m_statistics; }

    std::uint64_t Rounds() const { return m_nRounds; }

    /// How many channels moved.
    std::size_t Moved() const;

 private:
    struct Last {
        double value = 0.0;          // the last one that came
        std::optional<bool> inBand;  // of the last round; none: no value, or no band
        std::optional<double> target;
    };

    void Take(std::size_t channel, const Reading& reading, double elapsed);

    std::vector<ChannelInfo> m_channels;
    std::vector<std::optional<Band>> m_fixedBands;
    std::vector<ChannelStatistics> m_statistics;
    std::vector<Last> m_last;
    std::uint64_t m_nRounds = 0;
    Moment m_lastRound;
};
