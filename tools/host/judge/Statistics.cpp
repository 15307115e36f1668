#include "judge/Statistics.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "judge/AlarmRule.h"
#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "model/Reading.h"

namespace {

void TakeValue(ChannelStatistics& statistics, double value, double lastValue) {
    const bool first = statistics.Values() == 1;
    statistics.min = first ? value : std::min(statistics.min, value);
    statistics.max = first ? value : std::max(statistics.max, value);
    statistics.moved = statistics.moved || (!first && value != lastValue);
    // A sum of days of values would lose the last digits of each.
    statistics.mean += (value - statistics.mean) / static_cast<double>(statistics.Values());
}

}  // namespace

std::optional<double> ChannelStatistics::ShareInBand() const {
    return judgedSeconds > 0.0 ? std::optional(inBandSeconds / judgedSeconds) : std::nullopt;
}

Statistics::Statistics(std::vector<ChannelInfo> channels, const std::vector<AlarmRule>& rules)
    : m_channels(std::move(channels)),
      m_fixedBands(m_channels.size()),
      m_statistics(m_channels.size()),
      m_last(m_channels.size()) {
    for (const AlarmRule& rule : rules) {
        m_fixedBands.at(rule.channel) = rule.band;
    }
}

void Statistics::Update(const std::vector<Reading>& readings, Moment now) {
    const double elapsed = m_nRounds == 0 ? 0.0 : now.seconds - m_lastRound.seconds;
    for (std::size_t i = 0; i < m_channels.size(); ++i) {
        Take(i, readings.at(i), elapsed);
    }
    ++m_nRounds;
    m_lastRound = now;
}

void Statistics::Take(std::size_t channel, const Reading& reading, double elapsed) {
    ChannelStatistics& statistics = m_statistics[channel];
    Last& last = m_last[channel];
    if (reading.target) {
        last.target = reading.target;
    }
    ++statistics.reads;
    if (!reading.current) {
        ++statistics.failedReads;
        last.inBand.reset();
        return;
    }
    TakeValue(statistics, *reading.current, last.value);
    if (last.inBand) {
        statistics.judgedSeconds += elapsed;
        statistics.inBandSeconds += *last.inBand ? elapsed : 0.0;
    }
    std::optional<Band> band = m_fixedBands[channel];
    if (!band && last.target && HasTolerances(m_channels[channel])) {
        band = BandAround(*last.target, m_channels[channel]);
    }
    last.value = *reading.current;
    last.inBand = band ? std::optional(band->Holds(last.value)) : std::nullopt;
}

std::size_t Statistics::Moved() const {
    return static_cast<std::size_t>(std::ranges::count(m_statistics, true, &ChannelStatistics::moved));
}
