// How the monitor's table is written.

#include "show/Table.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "text/Text.h"

namespace {

TEST(Table, ColumnsAreAlignedByWhatIsSeenAndNumbersToTheRight) {
    const std::vector<std::string> lines = FormatTable({{"0", "H301-T", "temperature", "37.51", "-", "\u00B0C", "ok"},
                                                        {"1", "CO2", "gas", "5.00", "20.00", "%", "outside"}});
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "#  channel  kind         current  target  unit  state",
                         "0  H301-T   temperature    37.51       -  \u00B0C    ok",
                         "1  CO2      gas             5.00   20.00  %     outside",
                     }));
}

TEST(Table, NoNumberIsADash) {
    EXPECT_EQ(FormatValue(std::numeric_limits<double>::quiet_NaN()), "-");
    EXPECT_EQ(FormatValue(-std::numeric_limits<double>::infinity()), "-");
    EXPECT_EQ(FormatValue(37.016), "37.02");
}

TEST(Table, LargestNumberFits) { EXPECT_EQ(FormatValue(std::numeric_limits<double>::max()).size(), 312U); }

TEST(Text, HalfASurrogatePairIsAQuestionMark) {
    EXPECT_EQ(ToUtf8(L"\u00B5m \u4E2D"), "\u00B5m \u4E2D");
    EXPECT_EQ(ToUtf8(std::wstring{L'a', wchar_t{0xD83D}}), "a?");
    EXPECT_EQ(ToUtf8(std::wstring{wchar_t{0xD83D}, wchar_t{0xDD2C}}), "\U0001F52C");
}

}  // namespace
