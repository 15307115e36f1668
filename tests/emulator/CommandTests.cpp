#include "protocol/Command.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace emulator {

namespace {

TEST(CommandTests, Arguments_StandBehindBlanksAndInParentheses) {
    EXPECT_EQ(ParseCommand("status").keyword, "status");
    EXPECT_TRUE(ParseCommand("status").arguments.empty());
    EXPECT_EQ(ParseCommand("readcurval 9(0)").arguments, (std::vector<std::string>{"9", "0"}));
    EXPECT_EQ(ParseCommand("readsetpoint 12 1 -1").arguments, (std::vector<std::string>{"12", "1", "-1"}));
    EXPECT_EQ(ParseCommand("").keyword, "");
}

TEST(CommandTests, Numbers_AreThereOrNot) {
    const Command command = ParseCommand("writesetpoint 9 0 37.5");
    EXPECT_EQ(command.Integer(0), 9);
    EXPECT_EQ(command.Number(2), 37.5);
    EXPECT_FALSE(command.Integer(2));
    EXPECT_FALSE(command.Integer(3));
    EXPECT_FALSE(ParseCommand("find x").Integer(0));
    EXPECT_FALSE(ParseCommand("find  9").Integer(0));  // exactly one blank stands before an argument
}

}  // namespace

}  // namespace emulator
