#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

/// The computer's serial ports, as the connection dialog lists them.

/// One line of the list.
struct PortEntry {
    std::int32_t number;  // 3 for COM3
    std::wstring label;   // "COM3" or "COM3 (busy)"
};

/// Ports 1 to 64 for which the system knows a default configuration; the ones that cannot be opened at the moment are
/// marked busy.
std::vector<PortEntry> ListPorts();

/// The name under which a port is opened: the short one for 1 to 9, the device path for the others.
std::wstring PortOpenName(std::int32_t number);

/// Which entry to select: the first with this port, else the first of all.
std::size_t SelectedPort(std::span<const std::int32_t> ports, std::int32_t comPort) noexcept;

/// The port that OK chooses. `selection` is the list's own index, -1 when nothing is selected: then the previous port
/// is kept.
std::int32_t ChosenPort(std::span<const std::int32_t> ports, int selection, std::int32_t previous) noexcept;
