#include "platform/ReplyTimeout.h"

#include <optional>

std::optional<double> LibraryReplyTimeout() { return std::nullopt; }  // there is no registry here
