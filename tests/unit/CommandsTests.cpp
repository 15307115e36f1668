#include "link/Commands.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string_view>
#include <vector>

#include "core/CommandText.h"

namespace {

struct FormattedCommand {
    CommandText command;
    std::string_view text;
};

TEST(CommandsTests, EveryFormat_GivesTheCommandOnTheWire) {
    const std::vector<FormattedCommand> cases{
        {FormatCommand(command::kListProd), "listprod"},
        {FormatCommand(command::kListConProd), "listconprod"},
        {FormatCommand(command::kReadComPort, {9}), "comport 9 0"},
        {FormatCommand(command::kListDev, {17}), "listdev 17"},
        {FormatCommand(command::kListParams, {8}), "bl-param-list 8"},
        {FormatCommand(command::kMode, {7, 1}), "mode 7 1"},
        {FormatCommand(command::kSetComPort, {7, 3}), "comport 7 0 3"},
        {FormatCommand(command::kSetComPortSecondLink, {12, 3}), "comport 12 1 3"},
        {FormatCommand(command::kSetComPortSecondLink, {13, 64}), "comport 13 1 64"},
        {FormatCommand(command::kCheckConnection, {11}), "checkcon 11"},
        {FormatCommand(command::kStart, {1}), "start 1"},
        {FormatCommand(command::kStart, {0}), "start 0"},
        {FormatCommand(command::kStatus), "status"},
        {FormatCommand(command::kDisconnect, {15}), "connect 15 0"},
        {FormatCommand(command::kFind, {16}), "find 16"},
        {FormatCommand(command::kFindStatus), "findstat"},
        {FormatCommand(command::kReadCurrent, {17, 6}), "readcurval 17(6)"},
        {FormatCommand(command::kReadCurrentOnly, {9}), "readcurval 9"},
        {FormatCommand(command::kReadTarget, {12, 1}), "readsetpoint 12 1 -1"},
        {FormatCommand(command::kWriteTemperature, {9, 0, 37.25}), "writesetpoint 9 0 37.2"},
        {FormatCommand(command::kWriteGas, {12, 1, 5.0}), "writesetpoint 12 1 5.00"},
        {FormatCommand(command::kWriteHumidity, {15, 0, 62.7}), "writesetpoint 15 0 63"},
        {FormatCommand(command::kReadMin, {7, 0}), "readmin 7 0"},
        {FormatCommand(command::kReadMax, {12, 1}), "readmax 12 1"},
        {FormatCommand(command::kReadParam, {9, 107}), "bl-param-read 9 107"},
        {FormatCommand(command::kWriteParam, {11, 238, 1}), "bl-param-write 11 238 1"},
        {FormatCommand(command::kTemperatureAlarm, {8, 0.24}), "alarm 8 0.2"},
        {FormatCommand(command::kGasAlarm, {10, 0.4}), "alarm 10 0.40"},
    };
    for (const FormattedCommand& row : cases) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(row.command.view(), row.text);
        EXPECT_FALSE(row.command.IsCut());
    }
}

TEST(CommandsTests, NumbersThatAreNone_DoNotBreakTheText) {
    EXPECT_EQ(FormatCommand(command::kGasAlarm, {10, std::nan("")}).view(), "alarm 10 nan");
    EXPECT_EQ(FormatCommand(command::kGasAlarm, {10, -std::numeric_limits<double>::infinity()}).view(),
              "alarm 10 -inf");
}

TEST(CommandsTests, NumberTooLongForACommand_SaysThatItIsCut) {
    const CommandText text = FormatCommand(command::kWriteTemperature, {9, 0, 1e300});
    EXPECT_TRUE(text.IsCut());
    EXPECT_EQ(text.length(), 63U);
}

}  // namespace
