#pragma once

#include <charconv>

/// What std::from_chars does for a double, on standard libraries, too, that have it for whole numbers only (the Mac's).
/// There "inf" and "nan" are no numbers.
std::from_chars_result ReadDouble(const char* first, const char* last, double& value,
                                  std::chars_format format = std::chars_format::general);

/// What ReadDouble is where the library has nothing. `format` is general or fixed.
std::from_chars_result ReadDoubleByStream(const char* first, const char* last, double& value, std::chars_format format);
