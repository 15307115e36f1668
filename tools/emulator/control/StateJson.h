#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>

#include "server/EmulatedServer.h"

namespace emulator {

/// How the emulator stands, for programs: its time in seconds, its products with their devices, its faults.
nlohmann::json StateJson(EmulatedServer& server, std::int64_t commands, double now);

/// The faults alone.
nlohmann::json FaultsJson(EmulatedServer& server, double now);

}  // namespace emulator
