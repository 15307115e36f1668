// How an instant is written.

#include "text/UtcTime.h"

#include <gtest/gtest.h>

namespace {

TEST(UtcTime, IsWrittenWithMillisecondsAndZone) {
    EXPECT_EQ(FormatUtc(0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(FormatUtc(1'763'761'200'123), "2025-11-21T21:40:00.123Z");
    EXPECT_EQ(FormatUtc(1'709'208'000'007), "2024-02-29T12:00:00.007Z");
    EXPECT_EQ(FormatUtc(-1), "1969-12-31T23:59:59.999Z");
}

}  // namespace
