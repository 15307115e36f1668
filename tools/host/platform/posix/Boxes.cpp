#include "platform/Boxes.h"

#include <cstdint>
#include <string>
#include <vector>

bool HasWindows() noexcept { return false; }

std::vector<std::string> BoxesOf(std::uint32_t, bool) { return {}; }
