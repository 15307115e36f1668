#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "model/Reading.h"

/// The rows of the last 72 hours in memory: a time, and of each channel a value and a target. Numbers are kept as
/// floats, which hold seven digits: more than the device tells, and their shortest decimal form is what it told.

/// Rows as columns, oldest first: as a chart wants them.
struct HistoryTable {
    struct Channel {
        std::vector<float> current;  // NaN: no value
        std::vector<float> target;
    };
    std::vector<std::int64_t> utcMs;
    std::vector<Channel> channels;
};

/// Some rows of a history at one instant. Rows do not change once they are written, and a view holds on to its own: it
/// may be read while the history goes on, by another thread, too.
class HistoryView {
 public:
    std::size_t Size() const noexcept { return m_last - m_first; }

    /// Every row. Where rows fail to come for long, a row without values stands between them: the gap is to be seen.
    HistoryTable Rows() const;

    /// At most about `points` rows, for the eye: the view is cut into spans of as many rows each, and of each span and
    /// channel come the smallest and the largest value, in their order, and between them a row without a value if one
    /// is missing anywhere in the span. They stand at the span's beginning, middle and end. All rows when they are no
    /// more than `points`.
    HistoryTable Thinned(std::size_t points) const;

 private:
    friend class History;
    struct Block;
    const Block& BlockOf(std::size_t row) const noexcept;
    std::int64_t TimeOf(std::size_t row) const noexcept;
    bool IsGapBefore(std::size_t row) const noexcept;
    void AppendRow(std::size_t row, HistoryTable& table) const;
    void AppendSpan(std::size_t first, std::size_t last, HistoryTable& table) const;
    void AppendSpanOf(std::size_t channel, std::size_t first, std::size_t last, HistoryTable& table,
                      bool isMissing) const;

    std::vector<std::shared_ptr<const Block>> m_blocks;
    std::size_t m_first = 0;  // rows, counted from the first block's first
    std::size_t m_last = 0;
    std::size_t m_channels = 0;
    std::int64_t m_gapMs = 0;
};

class History {
 public:
    static constexpr std::int64_t kSpanMs = std::int64_t{72} * 60 * 60 * 1000;
    /// 72 hours at one row a second take 259,200; at a shorter interval the rows reach less far back.
    static constexpr std::size_t kMaxRows = 300'000;

    History(std::size_t channels, double intervalSeconds, std::size_t maxRows = kMaxRows);

    /// Takes the row of an instant. A clock that was set back does not turn the order round: the row then counts as a
    /// millisecond younger than the one before it.
    void Add(std::int64_t utcMs, const std::vector<Reading>& readings);

    std::size_t Size() const noexcept { return m_rows - m_first; }
    std::size_t Channels() const noexcept { return m_channels; }

    /// The rows from `sinceMs` to before `untilMs`. Takes no longer than copying a pointer for each 1024 rows.
    HistoryView View(std::int64_t sinceMs, std::int64_t untilMs) const;

 private:
    std::int64_t TimeOf(std::size_t row) const noexcept;
    std::size_t FirstRowAt(std::int64_t utcMs) const noexcept;
    void Forget();

    std::deque<std::shared_ptr<HistoryView::Block>> m_blocks;
    std::size_t m_first = 0;  // what is older in the first block is forgotten
    std::size_t m_rows = 0;   // in all blocks
    std::size_t m_channels;
    std::size_t m_maxRows;
    std::int64_t m_gapMs;
};
