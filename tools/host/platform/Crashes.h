#pragma once

#include <cstddef>
#include <optional>

/// From now on a crash ends this process at once, with the system's code for it: no box, no debugger, no report.
void CrashInSilence() noexcept;

/// How many handles or files this process has open; nothing where the system does not tell.
std::optional<std::size_t> OpenHandles();
