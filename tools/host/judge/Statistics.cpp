#include "judge/Statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

void Statistics::AddTable(const std::vector<double>& values) {
    ++m_nTables;
    m_channels.resize(values.size(), {std::numeric_limits<double>::quiet_NaN(), false});
    for (std::size_t i = 0; i < values.size(); ++i) {
        Channel& channel = m_channels[i];
        if (std::isnan(values[i])) {
            continue;
        }
        channel.moved = channel.moved || (!std::isnan(channel.last) && channel.last != values[i]);
        channel.last = values[i];
    }
}

std::size_t Statistics::Moved() const {
    return static_cast<std::size_t>(std::ranges::count(m_channels, true, &Channel::moved));
}
