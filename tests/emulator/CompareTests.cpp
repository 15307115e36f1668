#include "transcript/Compare.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

namespace {

using Lines = std::vector<std::string>;

/// The differences as people read them, without where they are.
Lines Compare(const Lines& recorded, const Lines& got, std::optional<double> tolerance = std::nullopt) {
    Exchange exchange{0.0, "x", {}, 7};
    for (const std::string& datagram : recorded) {
        exchange.replies.push_back({datagram, std::nullopt});
    }
    Lines lines;
    for (const Difference& difference : CompareReplies(exchange, got, tolerance)) {
        EXPECT_EQ(FormatDifference(difference).substr(0, 11), "line 7, x: ");
        lines.push_back(FormatDifference(difference).substr(11));
    }
    return lines;
}

TEST(CompareTests, SameReplies_AreNoDifference) {
    EXPECT_EQ(Compare({"0_x_1\r"}, {"0_x_1\r"}), Lines{});
    EXPECT_EQ(Compare({}, {}), Lines{});
    EXPECT_EQ(Compare({"rubbish", ""}, {"rubbish", ""}), Lines{});
}

TEST(CompareTests, EachPart_IsNamed) {
    EXPECT_EQ(Compare({"0_x_1\r"}, {"2_x_1\r"}), Lines{"code: recorded 0, got 2"});
    EXPECT_EQ(Compare({"0_x_1\r"}, {"0_y_1\r"}), Lines{"echo: recorded \"x\", got \"y\""});
    EXPECT_EQ(Compare({"0_x_1\r"}, {"0_x_\r"}), Lines{"payload: recorded \"1\", got nothing"});
    EXPECT_EQ(Compare({"0_x_1\r"}, {"3_y_e\r"}).size(), 3U);
    EXPECT_EQ(Compare({"0_x_1\r"}, {"0_x_1"}), Lines{"reply: recorded \"0_x_1\\r\", got \"0_x_1\""});
    EXPECT_EQ(Compare({"0_x_1\r"}, {""}), Lines{"reply: recorded \"0_x_1\\r\", got nothing"});
}

TEST(CompareTests, NumberOfDatagrams_IsADifference) {
    EXPECT_EQ(Compare({"0_x_1\r"}, {}), Lines{"number: recorded 1 datagram, got no answer"});
    EXPECT_EQ(Compare({}, {"0_x_1\r"}), Lines{"number: recorded no answer, got 1 datagram"});
    EXPECT_EQ(Compare({"0_x_1\r"}, {"0_x_2\r", "0_x_1\r"}).size(), 2U);  // and the first one's payload
}

TEST(CompareTests, Tolerance_IsForNumbersAndListsOfThem) {
    struct Case {
        const char* recorded;
        const char* got;
        double tolerance;
        bool alike;
    };
    for (const Case& row : std::vector<Case>{
             {"37.0", "37.1", 0.1, true},
             {"37.0", "36.9", 0.1, true},
             {"37.0", "37.11", 0.1, false},
             {"37.0", "37", 0.0, true},
             {"9 1 4 ", "9 1.05 4 ", 0.1, true},
             {"9 1 4 ", "9 1 5 ", 0.1, false},
             {"9 1", "9 1 4", 1e9, false},
             {"H301", "H302", 1e9, false},
             {"1 H301", "1.05 H301", 0.1, false},
             {"nan", "1", 1e9, false},
             {"", "0", 1e9, false},
             {" ", "", 1e9, false},
             {"nan", "nan", 0.1, true},
         }) {
        const Lines differences =
            Compare({"0_x_" + std::string(row.recorded) + "\r"}, {"0_x_" + std::string(row.got) + "\r"}, row.tolerance);
        EXPECT_EQ(differences.empty(), row.alike) << row.recorded << " and " << row.got;
    }
    EXPECT_EQ(Compare({"0_x_37.0\r"}, {"0_x_37.00\r"}).size(), 1U);  // without a tolerance
    EXPECT_EQ(Compare({"0_x_1\r"}, {"1_x_1\r"}, 5.0).size(), 1U);    // a code is no value
}

}  // namespace

}  // namespace emulator
