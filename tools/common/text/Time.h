#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Instants as people and files have them; in memory they are milliseconds since 1970-01-01T00:00:00Z. Years from 0 to
/// 9999; what lies outside is shown as the nearest of these.

/// "2026-11-21T21:40:00.123Z".
std::string FormatUtc(std::int64_t utcMs);

/// The instant of a text in exactly that form; nothing for any other text, and for a day that no calendar has.
std::optional<std::int64_t> ParseUtc(std::string_view text);

/// "2026-11-21 22:40:00.123 +01:00", by this computer's time zone.
std::string FormatLocal(std::int64_t utcMs);

/// The same for an offset that the caller knows.
std::string FormatAtOffset(std::int64_t utcMs, int offsetMinutes);
