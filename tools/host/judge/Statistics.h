#pragma once

#include <cstddef>
#include <vector>

/// What a monitored device did, for the summary.
class Statistics {
 public:
    /// Takes one table's values, always of the same channels in the same order; NaN is no value.
    void AddTable(const std::vector<double>& values);

    std::size_t Tables() const noexcept { return m_nTables; }

    /// How many channels showed two different values so far.
    std::size_t Moved() const;

 private:
    struct Channel {
        double last;
        bool moved;
    };
    std::size_t m_nTables = 0;
    std::vector<Channel> m_channels;
};
