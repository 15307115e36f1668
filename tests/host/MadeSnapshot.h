#pragma once

#include <cstdint>
#include <optional>

#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"

/// A watch of three channels, for the tests of what shows it: a zone, a gas that both have a target, and a sensor.
inline Snapshot MadeSnapshot(std::uint64_t row = 7) {
    Snapshot snapshot;
    snapshot.when = {1'763'761'200'123, 12.5};
    snapshot.row = row;
    snapshot.device = {"OKO-Lab bold line", false, 3};
    snapshot.live = true;
    snapshot.channels = {
        {ChannelKind::Temperature, 0, "H301-T", "H301-T", true, 25.0, 60.0, 0.5, 0.3},
        {ChannelKind::Gas, 1, "CO2", "gas:CO2", true, 0.0, 20.0, 0.25, 0.25},
        {ChannelKind::Humidity, 0, "Sensor", "Sensor", false, 0.0, 0.0, 0.0, 0.0},
    };
    snapshot.statuses = {
        {{37.3, 38.5, ChannelState::Below, false}, 0.2, 100, 1},
        {{4.55, 5.0, ChannelState::Within, true}, 0.25, 100, 0},
        {{std::nullopt, std::nullopt, ChannelState::NoAnswer, false}, 62.5, 100, 40},
    };
    snapshot.alarms = {
        {AlarmKind::OutOfBand, 1, AlarmPhase::Watching, 4.5, 5.5, std::nullopt, ""},
        {AlarmKind::MissingData, 2, AlarmPhase::On, 0.0, 0.0, Moment{1'763'761'100'000, 0.0}, "Sensor is silent"},
    };
    snapshot.exchanges.Add(0.0004);
    snapshot.exchanges.Add(0.003);
    snapshot.exchanges.Add(40.0);
    return snapshot;
}
