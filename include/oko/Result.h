#pragma once

#include <cstdint>

namespace oko {

/// What every operation with a 32-bit result returns, unless its own comment says otherwise. No operation throws.
inline constexpr std::int32_t kSuccess = 0;
inline constexpr std::int32_t kFailure = -1;  // failed, refused or cancelled

}  // namespace oko
