#pragma once

#include <optional>

/// The library's own time-out for a reply in seconds, from where it reads it; nothing when it is not set.
std::optional<double> LibraryReplyTimeout();
