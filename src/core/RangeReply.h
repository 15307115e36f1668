#pragma once

#include <string_view>

/// The number in a reply to "readmin" or "readmax": at most 7 characters of its payload. `missing` where the reply ends
/// before the payload or the payload says "NaN", "nan", an error or a number that is not finite.
double ReadRangeEnd(std::string_view reply, double missing) noexcept;
