#include "model/Snapshot.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "model/Reading.h"

std::vector<Reading> ReadingsOf(const Snapshot& snapshot) {
    std::vector<Reading> readings;
    readings.reserve(snapshot.statuses.size());
    std::ranges::transform(snapshot.statuses, std::back_inserter(readings), &ChannelStatus::reading);
    return readings;
}
