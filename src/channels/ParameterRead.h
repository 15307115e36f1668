#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "link/LinkOperation.h"  // IWYU pragma: export

/// Reading a product's numbered parameters, as the catalogue lists them. These functions take no lock of their own; a
/// caller that needs consistency holds the data lock. Each read blocks until the server answers, and allocates
/// nothing but to remember a command that timed out.
/// `operation`: the operation that the read is a part of, or just the device.

/// The text of a parameter's value: 63 characters and a terminator.
using ParameterText = std::array<char, 64>;

/// No companion parameter.
inline constexpr std::int32_t kNoCompanion = -1;

/// Reads a parameter's value text into `value`, which holds 64 characters and keeps what it had when the reply carries
/// no payload. False when the catalogue does not list the parameter (nothing is sent then), when no answer or an error
/// came. `check`: a value of 0, one that equals the companion's, one that begins with "n" and one that is not finite
/// count as missing. `useCache`: takes the reply that the catalogue keeps, if there is one. `second`: the companion's
/// number, or kNoCompanion.
bool ReadDeviceParameter(const LinkOperation& operation, std::uint32_t product, std::uint32_t parameter, char* value,
                         bool check, bool useCache, std::int32_t second) noexcept;

/// What a product tells of its air mode, asked afresh: "1" when it is on. Nothing when it does not tell.
std::optional<ParameterText> ReadAirModeState(const LinkOperation& operation, std::int32_t product) noexcept;

/// Whether a product has a parameter with a value that is present, finite and not zero, nor that of its companion.
bool IsDeviceParameterPresent(const LinkOperation& operation, std::uint32_t product, std::uint32_t parameter,
                              std::int32_t second) noexcept;

/// The same question for a reply that the caller holds. A reply without a payload counts as present, and so does one
/// that says that the command was not executed; a number that is not finite is no value and counts as absent.
bool IsReplyValueNonZero(std::string_view reply) noexcept;
