// Instants as texts.

#include "text/Time.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>

namespace {

constexpr std::int64_t kInstant = 1'795'297'200'123;  // 2026-11-21T21:40:00.123Z

TEST(Time, UtcIsIsoWithMilliseconds) {
    EXPECT_EQ(FormatUtc(kInstant), "2026-11-21T21:40:00.123Z");
    EXPECT_EQ(FormatUtc(0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(FormatUtc(951'782'400'000), "2000-02-29T00:00:00.000Z");
}

TEST(Time, BeforeTheEpochCountsBackwards) { EXPECT_EQ(FormatUtc(-1), "1969-12-31T23:59:59.999Z"); }

TEST(Time, WhatNoFourDigitYearHoldsIsTheNearestThatOneDoes) {
    EXPECT_EQ(FormatUtc(std::numeric_limits<std::int64_t>::max()), "9999-12-31T23:59:59.999Z");
    EXPECT_EQ(FormatUtc(std::numeric_limits<std::int64_t>::min()), "0000-01-01T00:00:00.000Z");
    EXPECT_EQ(FormatAtOffset(std::numeric_limits<std::int64_t>::max(), 60), "9999-12-31 23:59:59.999 +01:00");
}

TEST(Time, EveryInstantIsReadAsItWasWritten) {
    for (std::int64_t ms = -62'167'219'200'000; ms < 253'402'300'799'999; ms += 86'400'000LL * 997 + 12'345'678) {
        ASSERT_EQ(ParseUtc(FormatUtc(ms)), ms) << FormatUtc(ms);
    }
}

TEST(Time, OnlyTheWholeFormIsRead) {
    EXPECT_EQ(ParseUtc("2026-11-21T21:40:00.123Z"), kInstant);
    for (const char* const text : {"", "2026-11-21", "2026-11-21T21:40:00Z", "2026-11-21 21:40:00.123Z",
                                   "2026-11-21T21:40:00.123", "2026-11-21T21:40:00.123z", "2026-11-21T21:40:00.123Z ",
                                   "2026-11-2xT21:40:00.123Z", "2026-11-21T21:40:00.1234Z"}) {
        EXPECT_EQ(ParseUtc(text), std::nullopt) << text;
    }
}

TEST(Time, DaysAndHoursThatNoCalendarHasAreRefused) {
    for (const char* const text : {"2026-13-01T00:00:00.000Z", "2026-00-01T00:00:00.000Z", "2026-02-29T00:00:00.000Z",
                                   "2026-04-31T00:00:00.000Z", "2026-01-00T00:00:00.000Z", "2026-01-01T24:00:00.000Z",
                                   "2026-01-01T00:60:00.000Z", "2026-01-01T00:00:60.000Z"}) {
        EXPECT_EQ(ParseUtc(text), std::nullopt) << text;
    }
    EXPECT_TRUE(ParseUtc("2028-02-29T23:59:59.999Z"));
}

TEST(Time, OffsetIsShownWithTheTimeThatItGives) {
    EXPECT_EQ(FormatAtOffset(kInstant, 60), "2026-11-21 22:40:00.123 +01:00");
    EXPECT_EQ(FormatAtOffset(kInstant, -210), "2026-11-21 18:10:00.123 -03:30");
    EXPECT_EQ(FormatAtOffset(kInstant, 0), "2026-11-21 21:40:00.123 +00:00");
}

TEST(Time, LocalTimeGoesByTheZoneInSummerAndWinter) {
    ASSERT_EQ(setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1), 0);
    tzset();
    EXPECT_EQ(FormatLocal(kInstant), "2026-11-21 22:40:00.123 +01:00");
    EXPECT_EQ(FormatLocal(kInstant - 86'400'000LL * 140), "2026-07-04 23:40:00.123 +02:00");
    ASSERT_EQ(unsetenv("TZ"), 0);
    tzset();
}

}  // namespace
