#include "ui/StatusReport.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "catalogue/ProductRecord.h"
#include "fakes/ScriptedPlatform.h"

namespace {

/// One row as the service manual lists it.
struct Row {
    int product;
    int parameter;
    char rowClass;  // I, M or S
    const wchar_t* label;
    const wchar_t* unit;
};

const std::vector<Row> kRows{
    {8, 64, 'I', L"H201 Product Code", L""},
    {8, 65, 'I', L"H201 Production Date", L""},
    {8, 66, 'I', L"H201 Service Date", L""},
    {8, 67, 'I', L"H201 Serial Number", L""},
    {8, 68, 'I', L"H201 Software Version", L""},
    {8, 73, 'M', L"H201 Time when Air Heater Relay is Active", L"%"},
    {8, 83, 'S', L"H201 Control Mode", L""},
    {8, 85, 'S', L"H201 Fast Heating", L""},
    {8, 97, 'M', L"H201 Thermal Power of Air Heater", L"W"},
    {8, 98, 'M', L"H201 Fan Speed", L"rpm"},
    {8, 128, 'S', L"H201 Status", L""},
    {8, 184, 'M', L"H201 Prefilter Last Time Change", L"days"},
    {8, 185, 'M', L"H201 HEPA Filter Last Time Change", L"days"},
    {8, 186, 'S', L"H201 Filter Replacement Alert", L""},
    {9, 64, 'I', L"H301 Product Code", L""},
    {9, 65, 'I', L"H301 Production Date", L""},
    {9, 66, 'I', L"H301 Service Date", L""},
    {9, 67, 'I', L"H301 Serial Number", L""},
    {9, 68, 'I', L"H301 Software Version", L""},
    {9, 103, 'M', L"H301 Time when Base Ralay is Active", L"%"},
    {9, 104, 'M', L"H301 Time when Lid Relay is Active", L"%"},
    {9, 105, 'M', L"H301 Time when Humidity #1 Relay is Active", L"%"},
    {9, 106, 'M', L"H301 Time when Humidity #2 Relay is Active", L"%"},
    {9, 115, 'M', L"H301 Base Offset Temperature", L"\u00B0C"},
    {9, 116, 'M', L"H301 Lid Offset Temperature", L"\u00B0C"},
    {9, 117, 'M', L"H301 Humidity #1 Offset Temperature", L"\u00B0C"},
    {9, 118, 'M', L"H301 Humidity #2 Offset Temperature", L"\u00B0C"},
    {9, 128, 'S', L"H301 Status", L""},
    {9, 190, 'M', L"H301 Time when Objective Heater Relay is Active", L"%"},
    {9, 192, 'M', L"H301 Objective Heater Offset Temperature", L"\u00B0C"},
    {10, 31, 'I', L"CO2 Product Name #1", L""},
    {10, 32, 'I', L"CO2 Production Date #1", L""},
    {10, 33, 'I', L"CO2 Service Date #1", L""},
    {10, 34, 'I', L"CO2 Serial Number #1", L""},
    {10, 35, 'I', L"CO2 Software Version #1", L""},
    {10, 58, 'I', L"CO2 Product Name #2", L""},
    {10, 59, 'I', L"CO2 Production Date #2", L""},
    {10, 60, 'I', L"CO2 Service Date #2", L""},
    {10, 61, 'I', L"CO2 Serial Number #2", L""},
    {10, 62, 'I', L"CO2 Software Version", L""},
    {10, 13, 'M', L"CO2 The Duty Cycle of The Air Valve", L"%"},
    {10, 15, 'M', L"CO2 The Duty Cycle of The CO2 Valve", L"%"},
    {10, 18, 'M', L"CO2 Current Measured by Air Valve", L"mA"},
    {10, 20, 'M', L"CO2 Current Measured by CO2 Valve", L"mA"},
    {10, 23, 'M', L"CO2 Air Valve Opening", L"%"},
    {10, 25, 'M', L"CO2 CO2 Valve Opening", L"%"},
    {10, 28, 'M', L"CO2 Air flow rate", L"l/m"},
    {10, 30, 'M', L"CO2 CO2 flow rate", L"l/m"},
    {10, 129, 'S', L"CO2 Status", L""},
    {10, 138, 'M', L"CO2 Total flow rate", L"l/m"},
    {10, 153, 'M', L"CO2 Total flow rate Set Point", L"l/m"},
    {10, 215, 'M', L"CO2 Time when Sensing Cell Relay is Active", L"%"},
    {10, 233, 'S', L"CO2 Humidity Status", L""},
    {11, 31, 'I', L"O2 Product Name", L""},
    {11, 32, 'I', L"O2 Production Date", L""},
    {11, 33, 'I', L"O2 Service Date", L""},
    {11, 34, 'I', L"O2 Serial Number", L""},
    {11, 35, 'I', L"O2 Software Version", L""},
    {11, 13, 'M', L"O2 The Duty Cycle of The Air Valve", L"%"},
    {11, 14, 'M', L"O2 The Duty Cycle of The Nitrogen Valve", L"%"},
    {11, 18, 'M', L"O2 Current Measured by Air Valve", L"mA"},
    {11, 19, 'M', L"O2 Current Measured by Nitrogen Valve", L"mA"},
    {11, 23, 'M', L"O2 Air Valve Opening", L"%"},
    {11, 24, 'M', L"O2 Nitrogen Valve Opening", L"%"},
    {11, 28, 'M', L"O2 Air flow rate", L"l/m"},
    {11, 29, 'M', L"O2 N2 flow rate", L"l/m"},
    {11, 130, 'S', L"O2 Status", L""},
    {11, 138, 'M', L"O2 Total flow rate", L"l/m"},
    {11, 153, 'M', L"O2 Total flow rate Set Point", L"l/m"},
    {12, 31, 'I', L"CO2/O2 Product Name", L""},
    {12, 32, 'I', L"CO2/O2 Production Date", L""},
    {12, 33, 'I', L"CO2/O2 Service Date", L""},
    {12, 34, 'I', L"CO2/O2 Serial Number", L""},
    {12, 35, 'I', L"CO2/O2 Software Version", L""},
    {12, 13, 'M', L"CO2/O2 The Duty Cycle of The Air Valve", L"%"},
    {12, 14, 'M', L"CO2/O2 The Duty Cycle of The Nitrogen Valve", L"%"},
    {12, 15, 'M', L"CO2/O2 The Duty Cycle of The CO2 Valve", L"%"},
    {12, 18, 'M', L"CO2/O2 Current Measured by Air Valve", L"mA"},
    {12, 19, 'M', L"CO2/O2 Current Measured by Nitrogen Valve", L"mA"},
    {12, 20, 'M', L"CO2/O2 Current Measured by CO2 Valve", L"mA"},
    {12, 23, 'M', L"CO2/O2 Air Valve Opening", L"%"},
    {12, 24, 'M', L"CO2/O2 Nitrogen Valve Opening", L"%"},
    {12, 25, 'M', L"CO2/O2 CO2 Valve Opening", L"%"},
    {12, 28, 'M', L"CO2/O2 Air flow rate", L"l/m"},
    {12, 29, 'M', L"CO2/O2 N2 flow rate", L"l/m"},
    {12, 30, 'M', L"CO2/O2 CO2 flow rate", L"l/m"},
    {12, 129, 'S', L"CO2/O2 CO2 Status", L""},
    {12, 130, 'S', L"CO2/O2 O2 Status", L""},
    {12, 138, 'M', L"CO2/O2 Total flow rate", L"l/m"},
    {12, 150, 'M', L"CO2/O2 O2 flow rate", L"l/m"},
    {12, 151, 'M', L"CO2/O2 The Duty Cycle of The O2 Valve", L"%"},
    {12, 153, 'M', L"CO2/O2 Total flow rate Set Point", L"l/m"},
    {12, 214, 'M', L"CO2/O2 Time when Humidifier Relay is Active", L"%"},
    {12, 215, 'M', L"CO2/O2 Time when Sensing Cell Relay is Active", L"%"},
    {12, 233, 'S', L"CO2/O2 Humidity Status", L""},
    {13, 31, 'I', L"CO2/O2 Product Name", L""},
    {13, 32, 'I', L"CO2/O2 Production Date", L""},
    {13, 33, 'I', L"CO2/O2 Service Date", L""},
    {13, 34, 'I', L"CO2/O2 Serial Number", L""},
    {13, 35, 'I', L"CO2/O2 Software Version", L""},
    {13, 13, 'M', L"CO2/O2 The Duty Cycle of The Air Valve", L"%"},
    {13, 14, 'M', L"CO2/O2 The Duty Cycle of The Nitrogen Valve", L"%"},
    {13, 15, 'M', L"CO2/O2 The Duty Cycle of The CO2 Valve", L"%"},
    {13, 18, 'M', L"CO2/O2 Current Measured by Air Valve", L"mA"},
    {13, 19, 'M', L"CO2/O2 Current Measured by Nitrogen Valve", L"mA"},
    {13, 20, 'M', L"CO2/O2 Current Measured by CO2 Valve", L"mA"},
    {13, 23, 'M', L"CO2/O2 Air Valve Opening", L"%"},
    {13, 24, 'M', L"CO2/O2 Nitrogen Valve Opening", L"%"},
    {13, 25, 'M', L"CO2/O2 CO2 Valve Opening", L"%"},
    {13, 28, 'M', L"CO2/O2 Air flow rate", L"l/m"},
    {13, 29, 'M', L"CO2/O2 N2 flow rate", L"l/m"},
    {13, 30, 'M', L"CO2/O2 CO2 flow rate", L"l/m"},
    {13, 129, 'S', L"CO2/O2 CO2 Status", L""},
    {13, 130, 'S', L"CO2/O2 O2 Status", L""},
    {13, 138, 'M', L"CO2/O2 Total flow rate", L"l/m"},
    {13, 150, 'M', L"CO2/O2 O2 flow rate", L"l/m"},
    {13, 151, 'M', L"CO2/O2 The Duty Cycle of The O2 Valve", L"%"},
    {13, 153, 'M', L"CO2/O2 Total flow rate Set Point", L"l/m"},
    {13, 214, 'M', L"CO2/O2 Time when Humidifier Relay is Active", L"%"},
    {13, 215, 'M', L"CO2/O2 Time when Sensing Cell Relay is Active", L"%"},
    {13, 233, 'S', L"CO2/O2 Humidity Status", L""},
    {14, 64, 'I', L"H101 Product Code", L""},
    {14, 65, 'I', L"H101 Production Date", L""},
    {14, 66, 'I', L"H101 Service Date", L""},
    {14, 67, 'I', L"H101 Serial Number", L""},
    {14, 68, 'I', L"H101 Software Version", L""},
    {14, 115, 'M', L"H101 Base Offset Temperature", L"\u00B0C"},
    {14, 118, 'M', L"H101 Humidity #2 Offset Temperature", L"\u00B0C"},
    {14, 128, 'S', L"H101 Status", L""},
    {14, 190, 'M', L"H101 Time when Objective Heater Relay is Active", L"%"},
    {14, 192, 'M', L"H101 Objective Heater Offset Temperature", L"\u00B0C"},
    {15, 362, 'I', L"H301-HM Product Name", L""},
    {15, 363, 'I', L"H301-HM Production Date", L""},
    {15, 364, 'I', L"H301-HM Service Date", L""},
    {15, 365, 'I', L"H301-HM Serial Number", L""},
    {15, 366, 'I', L"H301-HM Software Version", L""},
    {15, 138, 'M', L"H301-HM Total flow rate", L"l/m"},
    {15, 214, 'M', L"H301-HM Time when Humidifier Relay is Active", L"%"},
    {15, 215, 'M', L"H301-HM Time when Sensing Cell Relay is Active", L"%"},
    {15, 233, 'S', L"H301-HM Humidity Status", L""},
    {15, 367, 'M', L"H301-HM The Duty Cycle of The Total Flow Valve", L"%"},
};

class StatusReportTests : public DeviceTest {
 protected:
    /// A device with these products, each with every parameter that any row asks for.
    CDevApiInterface_Impl& DeviceWith(const std::vector<int>& products) {
        std::vector<int> parameters(399);
        std::iota(parameters.begin(), parameters.end(), 1);
        CDevApiInterface_Impl& device = RealDevice();
        for (const int product : products) {
            device.m_products.push_back(ProductWith(product, parameters));
        }
        platform.server.ClearCommands();
        return device;
    }
};

TEST_F(StatusReportTests, EveryProduct_PrintsItsRowsInOrder) {
    EXPECT_EQ(kRows.size(), 115U + 26U);  // products 12 and 13 share their rows
    for (int product = 7; product <= 17; ++product) {
        SCOPED_TRACE(product);
        std::wstring expected;
        std::vector<std::string> commands;
        for (const Row& row : kRows) {
            if (row.product == product) {
                expected += std::wstring(row.label) + L": 1 " + row.unit + L"\n";
                commands.push_back("bl-param-read " + std::to_string(product) + " " + std::to_string(row.parameter));
            }
        }
        CDevApiInterface_Impl& device = DeviceWith({product});
        const StatusReport report = CollectStatusReport(device);
        EXPECT_EQ(report.text, expected);
        EXPECT_EQ(report.rows, static_cast<int>(commands.size()));
        EXPECT_EQ(platform.server.Commands(), commands);
    }
}

TEST_F(StatusReportTests, Classes_DecideHowARowIsRead) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.product << " " << row.parameter);
        CDevApiInterface_Impl& device = DeviceWith({row.product});
        auto& params = device.m_products[0].m_params;
        std::erase_if(params, [&](const ParamRecord& param) { return param.m_iParam != row.parameter; });
        const std::string command =
            "bl-param-read " + std::to_string(row.product) + " " + std::to_string(row.parameter);
        // A zero is a missing measurement, but a state like any other.
        platform.server.AnswerPayload(command, "0");
        EXPECT_EQ(CollectStatusReport(device).rows, row.rowClass == 'M' ? 0 : 1);
        // An identity is asked for once.
        platform.server.ClearCommands();
        CollectStatusReport(device);
        EXPECT_EQ(platform.server.Commands().size(), row.rowClass == 'I' ? 0U : 1U);
        platform.server.Answer(command, "0_" + command + "_error\r");
        params[0].m_szValue = {};
        EXPECT_EQ(CollectStatusReport(device).rows, 0);
        platform.server.AnswerPayload(command, "1");
    }
}

TEST_F(StatusReportTests, SeveralProducts_FollowTheCatalogue) {
    const StatusReport report = CollectStatusReport(DeviceWith({15, 7, 8}));
    EXPECT_EQ(report.rows, 24);
    EXPECT_TRUE(report.text.starts_with(L"H301-HM Product Name: 1 \n"));
    EXPECT_TRUE(report.text.ends_with(L"H201 Filter Replacement Alert: 1 \n"));
}

TEST_F(StatusReportTests, Values_ArePrintedAsTheServerGaveThem) {
    CDevApiInterface_Impl& device = DeviceWith({8});
    std::erase_if(device.m_products[0].m_params, [](const ParamRecord& param) { return param.m_iParam != 98; });
    platform.server.AnswerPayload("bl-param-read 8 98", "1200");
    EXPECT_EQ(CollectStatusReport(device).text, L"H201 Fan Speed: 1200 rpm\n");
}

TEST_F(StatusReportTests, Bytes_BecomeTheCharactersOfTheirNumbers) {
    CDevApiInterface_Impl& device = DeviceWith({8});
    std::erase_if(device.m_products[0].m_params, [](const ParamRecord& param) { return param.m_iParam != 64; });
    platform.server.AnswerPayload("bl-param-read 8 64", "a\x7F\x80\xB0\xFFz");
    EXPECT_EQ(CollectStatusReport(device).text, L"H201 Product Code: a\x7F\x80\xB0\xFFz \n");
}

TEST_F(StatusReportTests, Run_ReadsWhileBusyAndLaysOutAfterwardsUnderTheWaitCursor) {
    CDevApiInterface_Impl& device = DeviceWith({8, 9});
    const RecordedWindows& windows = platform.windows;
    int reads = 0;
    platform.server.SetDefault([&](std::string_view command) -> ServerReply {
        ++reads;
        EXPECT_TRUE(device.m_bBusy) << command;
        EXPECT_EQ(windows.waitCursors, 1) << command;
        return ScriptedServer::BuiltInReply(command);
    });
    int rows = 0;
    RunStatusReport(device, [&](const StatusReport& report) {
        rows = report.rows;
        EXPECT_FALSE(device.m_bBusy);
        EXPECT_EQ(windows.waitCursors, 1);
    });
    EXPECT_EQ(rows, 30);
    EXPECT_EQ(reads, 30);
    EXPECT_EQ(windows.waitCursors, 0);
}

/// `count` lines of `length` characters, line feed included.
std::wstring Lines(int count, std::size_t length) {
    std::wstring text;
    for (int i = 0; i < count; ++i) {
        text += std::wstring(length - 1, static_cast<wchar_t>(L'a' + i % 26)) + L"\n";
    }
    return text;
}

TEST(StatusSplitTests, UpTo1023Characters_StayTogether) {
    const std::wstring text = Lines(33, 31);
    ASSERT_EQ(text.size(), 1023U);
    const StatusColumns columns = SplitStatusReport(text);
    EXPECT_EQ(columns.texts[0], text);
    EXPECT_TRUE(columns.texts[1].empty());
    EXPECT_EQ(columns.linesBefore, (std::array<int, 2>{0, 0}));
}

TEST(StatusSplitTests, LongerText_IsSplitAfterTheLastLineThatFits) {
    const std::wstring text = Lines(33, 31) + L"x\n";
    const StatusColumns columns = SplitStatusReport(text);
    EXPECT_EQ(columns.texts[0], Lines(33, 31));
    EXPECT_EQ(columns.texts[1], L"x\n");
    EXPECT_EQ(columns.linesBefore, (std::array<int, 2>{32, 0}));
    const StatusColumns other = SplitStatusReport(Lines(35, 30));  // 34 lines would be 1020
    EXPECT_EQ(other.texts[0].size(), 1020U);
    EXPECT_EQ(other.texts[1].size(), 30U);
}

TEST(StatusSplitTests, LineThatEndsOneCharacterTooLate_GoesToTheNextColumn) {
    const StatusColumns columns = SplitStatusReport(Lines(32, 32));
    EXPECT_EQ(columns.texts[0].size(), 31U * 32U);
    EXPECT_EQ(columns.texts[1].size(), 32U);
    EXPECT_EQ(columns.linesBefore, (std::array<int, 2>{30, 0}));
}

TEST(StatusSplitTests, VeryLongText_FillsThreeColumnsAndTheThirdTakesTheRest) {
    const StatusColumns columns = SplitStatusReport(Lines(140, 30));
    EXPECT_EQ(columns.texts[0].size(), 1020U);
    EXPECT_EQ(columns.texts[1].size(), 1020U);
    EXPECT_EQ(columns.texts[2].size(), 140U * 30U - 2040U);
    EXPECT_EQ(columns.linesBefore, (std::array<int, 2>{33, 33}));
}

TEST(StatusSplitTests, FirstLineTooLong_IsNotSplit) {
    const std::wstring text = std::wstring(1500, L'x') + L"\ny\n";
    const StatusColumns columns = SplitStatusReport(text);
    EXPECT_EQ(columns.texts[0], text);
    EXPECT_TRUE(columns.texts[1].empty());
    EXPECT_TRUE(SplitStatusReport(L"").texts[0].empty());
}

TEST(StatusLayoutTests, Heights_FollowTheLines) {
    StatusColumns one;
    one.texts[0] = L"x\n";
    const StatusLayout plain = LayOutStatusReport(26, 14, one);  // 14 pixels a line
    EXPECT_EQ(plain.reportHeight, 196);
    EXPECT_EQ(plain.growth, 170);
    EXPECT_EQ(plain.columnHeights, (std::array<int, 3>{196, 0, 0}));
    const StatusLayout none = LayOutStatusReport(27, 0, {});
    EXPECT_EQ(none.growth, -27);
    EXPECT_EQ(none.columnHeights[0], 0);
}

TEST(StatusLayoutTests, SplitColumns_ShareTheHeight) {
    const StatusColumns two{{L"a", L"b", L""}, {20, 0}};
    EXPECT_EQ(LayOutStatusReport(20, 30, two).columnHeights, (std::array<int, 3>{220, 110, 0}));
    const StatusColumns three{{L"a", L"b", L"c"}, {20, 15}};
    const StatusLayout layout = LayOutStatusReport(20, 50, three);
    EXPECT_EQ(layout.columnHeights, (std::array<int, 3>{220, 165, 165}));
    EXPECT_EQ(layout.reportHeight, 550);
    EXPECT_EQ(layout.growth, 530);
}

}  // namespace
