#pragma once

#include <string>

#include "model/Event.h"

/// "2026-11-21 22:40:00.123 +01:00  alarm on CO2: CO2 is 6.20 %, above 5.50 %", for people, by the local time.
std::string EventLine(const Event& event);
