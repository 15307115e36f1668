#pragma once

#include <cstdint>

/// Connects every link from now on to `port` in place of the server's own; 0: to that one again.
void RedirectLinks(std::uint16_t port) noexcept;
