#pragma once

#include <cstdint>

/// The machine-wide switches, values of HKEY_LOCAL_MACHINE\Software\Vellmark\Misc.
struct Switches {
    bool logCommunication = false;
    std::uint32_t replyTimeoutMs = 0;  // how long a reply is waited for; 0: for ever
};

/// Reads the switches as they are now. One that is missing or not a number of four bytes keeps its default.
Switches ReadSwitches() noexcept;
