#pragma once

#include <cstdint>
#include <optional>

/// What the connection settings text asks of a link besides the port.
struct LinkOptions {
    std::optional<std::uint32_t> replyTimeoutMs;  // instead of the registry's; 0: for ever
    bool watchOnly = false;                       // nothing that changes the incubator or the server is sent
};
