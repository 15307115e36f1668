#include "text/Time.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "platform/LocalTime.h"

namespace {

using std::chrono::milliseconds;

constexpr std::int64_t kEarliest = -62'167'219'200'000;  // 0000-01-01T00:00:00.000Z
constexpr std::int64_t kLatest = 253'402'300'799'999;    // 9999-12-31T23:59:59.999Z
constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:dd.dddZ";

/// A number of so many digits, at its place in a text.
struct Field {
    std::size_t begin;
    std::size_t digits;
};
constexpr std::array<Field, 7> kFields{{{0, 4}, {5, 2}, {8, 2}, {11, 2}, {14, 2}, {17, 2}, {20, 3}}};

void Put(std::string& text, const Field& field, std::int64_t number) {
    for (std::size_t i = field.digits; i-- > 0; number /= 10) {
        text[field.begin + i] = static_cast<char>('0' + number % 10);
    }
}

std::string Format(std::int64_t shownMs, std::string text) {
    const std::chrono::sys_time<milliseconds> time{milliseconds(std::clamp(shownMs, kEarliest, kLatest))};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date{day};
    const std::int64_t ms = (time - day).count();
    const std::array<std::int64_t, kFields.size()> numbers{static_cast<int>(date.year()),
                                                           static_cast<unsigned>(date.month()),
                                                           static_cast<unsigned>(date.day()),
                                                           ms / 3'600'000,
                                                           ms / 60'000 % 60,
                                                           ms / 1000 % 60,
                                                           ms % 1000};
    for (std::size_t i = 0; i < kFields.size(); ++i) {
        Put(text, kFields[i], numbers[i]);
    }
    return text;
}

bool HasPattern(std::string_view text) {
    return std::ranges::equal(text, kPattern, [](char character, char wanted) {
        return wanted == 'd' ? character >= '0' && character <= '9' : character == wanted;
    });
}

}  // namespace

std::string FormatUtc(std::int64_t utcMs) { return Format(utcMs, "0000-00-00T00:00:00.000Z"); }

std::optional<std::int64_t> ParseUtc(std::string_view text) {
    if (!HasPattern(text)) {
        return std::nullopt;
    }
    std::array<int, kFields.size()> numbers{};
    for (std::size_t i = 0; i < kFields.size(); ++i) {
        for (const char digit : text.substr(kFields[i].begin, kFields[i].digits)) {
            numbers[i] = numbers[i] * 10 + (digit - '0');
        }
    }
    const std::chrono::year_month_day date{std::chrono::year(numbers[0]),
                                           std::chrono::month(static_cast<unsigned>(numbers[1])),
                                           std::chrono::day(static_cast<unsigned>(numbers[2]))};
    if (!date.ok() || numbers[3] > 23 || numbers[4] > 59 || numbers[5] > 59) {
        return std::nullopt;
    }
    const std::chrono::sys_days day{date};
    const std::int64_t seconds = (std::int64_t{numbers[3]} * 60 + numbers[4]) * 60 + numbers[5];
    return milliseconds(day.time_since_epoch()).count() + seconds * 1000 + numbers[6];
}

std::string FormatLocal(std::int64_t utcMs) { return FormatAtOffset(utcMs, LocalOffsetMinutes(utcMs)); }

std::string FormatAtOffset(std::int64_t utcMs, int offsetMinutes) {
    std::string text = Format(std::clamp(utcMs, kEarliest, kLatest) + std::int64_t{offsetMinutes} * 60'000,
                              "0000-00-00 00:00:00.000 +00:00");
    // cppcheck-suppress containerOutOfBounds; Format keeps the length of its pattern
    text[24] = offsetMinutes < 0 ? '-' : '+';
    Put(text, {25, 2}, std::abs(offsetMinutes) / 60);
    Put(text, {28, 2}, std::abs(offsetMinutes) % 60);
    return text;
}
