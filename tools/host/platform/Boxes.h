#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Whether this system has windows and message queues.
bool HasWindows() noexcept;

/// The message boxes and dialogs that another process shows, "TITLE: TEXT". With `close` each is closed as by its close
/// box.
std::vector<std::string> BoxesOf(std::uint32_t process, bool close);
