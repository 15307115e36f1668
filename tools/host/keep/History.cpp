#include "keep/History.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <vector>

#include "model/Reading.h"

namespace {

constexpr std::size_t kBlockRows = 1024;
constexpr float kNone = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t kRowsOfSpan = 3;  // one extreme, what is missing, the other extreme

/// Rows that are further apart than some intervals are a gap; a device that answers slowly makes none.
constexpr double kGapIntervals = 3.0;
constexpr double kShortestGapSeconds = 10.0;

float ToFloat(const std::optional<double>& value) {
    return value && std::abs(*value) <= std::numeric_limits<float>::max() ? static_cast<float>(*value) : kNone;
}

struct Extremes {
    float smallest = kNone;
    float largest = kNone;
    bool isSmallestFirst = true;
    bool isMissing = false;

    void Add(float value) {
        if (std::isnan(value)) {
            isMissing = true;
            return;
        }
        if (!(smallest <= value)) {
            smallest = value;
            isSmallestFirst = false;
        }
        if (!(largest >= value)) {
            largest = value;
            isSmallestFirst = true;
        }
    }
};

}  // namespace

/// Has its full size from the beginning: rows that are written stay where they are and can be read while more follow.
struct HistoryView::Block {
    explicit Block(std::size_t channels)
        : utcMs(kBlockRows), current(kBlockRows * channels), target(kBlockRows * channels) {}

    std::vector<std::int64_t> utcMs;
    std::vector<float> current;  // of all channels of a row, then of the next row
    std::vector<float> target;
};

const HistoryView::Block& HistoryView::BlockOf(std::size_t row) const noexcept { return *m_blocks[row / kBlockRows]; }

std::int64_t HistoryView::TimeOf(std::size_t row) const noexcept { return BlockOf(row).utcMs[row % kBlockRows]; }

bool HistoryView::IsGapBefore(std::size_t row) const noexcept {
    return row > m_first && TimeOf(row) - TimeOf(row - 1) > m_gapMs;
}

HistoryTable HistoryView::Rows() const {
    HistoryTable table;
    table.channels.resize(m_channels);
    for (std::size_t row = m_first; row < m_last; ++row) {
        AppendRow(row, table);
    }
    return table;
}

HistoryTable HistoryView::Thinned(std::size_t points) const {
    if (Size() <= points) {
        return Rows();
    }
    HistoryTable table;
    table.channels.resize(m_channels);
    const std::size_t spans = std::max<std::size_t>(1, points / kRowsOfSpan);
    for (std::size_t i = 0; i < spans; ++i) {
        AppendSpan(m_first + Size() * i / spans, m_first + Size() * (i + 1) / spans, table);
    }
    return table;
}

void HistoryView::AppendRow(std::size_t row, HistoryTable& table) const {
    if (IsGapBefore(row)) {
        table.utcMs.push_back(TimeOf(row - 1) + (TimeOf(row) - TimeOf(row - 1)) / 2);
        for (HistoryTable::Channel& channel : table.channels) {
            channel.current.push_back(kNone);
            channel.target.push_back(kNone);
        }
    }
    table.utcMs.push_back(TimeOf(row));
    const Block& block = BlockOf(row);
    for (std::size_t i = 0; i < m_channels; ++i) {
        const std::size_t at = row % kBlockRows * m_channels + i;
        table.channels[i].current.push_back(block.current[at]);
        table.channels[i].target.push_back(block.target[at]);
    }
}

void HistoryView::AppendSpan(std::size_t first, std::size_t last, HistoryTable& table) const {
    bool isGap = false;
    for (std::size_t row = first; row < last; ++row) {
        isGap = isGap || IsGapBefore(row);
    }
    table.utcMs.push_back(TimeOf(first));
    table.utcMs.push_back(TimeOf(first) + (TimeOf(last - 1) - TimeOf(first)) / 2);
    table.utcMs.push_back(TimeOf(last - 1));
    for (std::size_t i = 0; i < m_channels; ++i) {
        AppendSpanOf(i, first, last, table, isGap);
    }
}

void HistoryView::AppendSpanOf(std::size_t channel, std::size_t first, std::size_t last, HistoryTable& table,
                               bool isMissing) const {
    const auto index = [&](std::size_t row) { return row % kBlockRows * m_channels + channel; };
    Extremes extremes;
    extremes.isMissing = isMissing;
    for (std::size_t row = first; row < last; ++row) {
        extremes.Add(BlockOf(row).current[index(row)]);
    }
    const float earlier = extremes.isSmallestFirst ? extremes.smallest : extremes.largest;
    const float later = extremes.isSmallestFirst ? extremes.largest : extremes.smallest;
    const float firstTarget = BlockOf(first).target[index(first)];
    const float lastTarget = BlockOf(last - 1).target[index(last - 1)];
    HistoryTable::Channel& column = table.channels[channel];
    column.current.insert(column.current.end(), {earlier, extremes.isMissing ? kNone : earlier, later});
    column.target.insert(column.target.end(), {firstTarget, extremes.isMissing ? kNone : firstTarget, lastTarget});
}

History::History(std::size_t channels, double intervalSeconds, std::size_t maxRows)
    : m_channels(channels),
      m_maxRows(maxRows),
      m_gapMs(static_cast<std::int64_t>(1000.0 * std::max(kShortestGapSeconds, kGapIntervals * intervalSeconds))) {}

void History::Add(std::int64_t utcMs, const std::vector<Reading>& readings) {
    if (m_rows % kBlockRows == 0) {
        m_blocks.push_back(std::make_shared<HistoryView::Block>(m_channels));
    }
    HistoryView::Block& block = *m_blocks.back();
    block.utcMs[m_rows % kBlockRows] = m_rows == 0 ? utcMs : std::max(utcMs, TimeOf(m_rows - 1) + 1);
    for (std::size_t i = 0; i < m_channels; ++i) {
        const std::size_t at = m_rows % kBlockRows * m_channels + i;
        block.current[at] = ToFloat(readings[i].current);
        block.target[at] = ToFloat(readings[i].target);
    }
    ++m_rows;
    Forget();
}

HistoryView History::View(std::int64_t sinceMs, std::int64_t untilMs) const {
    HistoryView view;
    view.m_channels = m_channels;
    view.m_gapMs = m_gapMs;
    view.m_first = FirstRowAt(sinceMs);
    view.m_last = std::max(view.m_first, FirstRowAt(untilMs));
    const std::size_t skipped = view.m_first / kBlockRows;
    const std::size_t blocks = view.m_last == view.m_first ? 0 : (view.m_last - 1) / kBlockRows + 1 - skipped;
    const auto begin = m_blocks.begin() + static_cast<std::ptrdiff_t>(skipped);
    view.m_blocks.assign(begin, begin + static_cast<std::ptrdiff_t>(blocks));
    view.m_first -= skipped * kBlockRows;
    view.m_last -= skipped * kBlockRows;
    return view;
}

std::int64_t History::TimeOf(std::size_t row) const noexcept {
    return m_blocks[row / kBlockRows]->utcMs[row % kBlockRows];
}

/// The first row that is not older; the number of rows when all are.
std::size_t History::FirstRowAt(std::int64_t utcMs) const noexcept {
    std::size_t low = m_first;
    std::size_t high = m_rows;
    while (low < high) {
        const std::size_t middle = low + (high - low) / 2;
        if (TimeOf(middle) < utcMs) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low;
}

void History::Forget() {
    const std::int64_t newest = TimeOf(m_rows - 1);
    while (Size() > m_maxRows || newest - TimeOf(m_first) >= kSpanMs) {
        ++m_first;
    }
    while (m_first >= kBlockRows) {
        m_blocks.pop_front();
        m_first -= kBlockRows;
        m_rows -= kBlockRows;
    }
}
