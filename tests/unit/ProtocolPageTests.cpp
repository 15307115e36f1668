// Holds the table of commands in docs/protocol.md against the formats and against what a device really sends.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "fakes/HostLog.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "oko/Settings.h"
#include "ui/ConfigurationFields.h"
#include "ui/DialogEnd.h"

namespace {

std::string ReadText(const std::string& path) {
    std::ifstream file(std::string(OKO_SOURCE_DIR) + "/" + path);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

/// One row of the page's table.
struct Row {
    std::string format;
    std::string example;
};

std::vector<Row> RowsOfThePage() {
    const std::string page = ReadText("docs/protocol.md");
    const std::regex row(R"(\| `([^`]*)` \| `([^`]*)` \|[^\n]*)");
    std::vector<Row> rows;
    for (auto match = std::sregex_iterator(page.begin(), page.end(), row); match != std::sregex_iterator(); ++match) {
        rows.push_back({(*match)[1], (*match)[2]});
    }
    return rows;
}

std::multiset<std::string> FormatsOfTheHeader() {
    const std::string header = ReadText("src/link/Commands.h");
    const std::regex format(R"(std::string_view k\w+ =\s*"([^"]*)\")");
    std::multiset<std::string> formats;
    for (auto match = std::sregex_iterator(header.begin(), header.end(), format); match != std::sregex_iterator();
         ++match) {
        formats.insert((*match)[1]);
    }
    return formats;
}

/// Takes the digits at the start of the text, with the minus before them where there may be one; gives how many.
std::size_t TakeDigits(std::string_view& text, bool signedNumber) {
    if (signedNumber && text.starts_with('-')) {
        text.remove_prefix(1);
    }
    const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
    text.remove_prefix(count);
    return count;
}

/// Takes what "%0.<decimals>f" prints from the start of the text.
bool TakeFixed(std::string_view& text, std::size_t decimals) {
    if (TakeDigits(text, true) == 0) {
        return false;
    }
    if (decimals == 0) {
        return true;
    }
    if (!text.starts_with('.')) {
        return false;
    }
    text.remove_prefix(1);
    return TakeDigits(text, false) == decimals;
}

/// Whether a command is what the format gives for some numbers.
bool Fits(std::string_view command, std::string_view format) {
    while (!format.empty()) {
        if (format.starts_with("%d")) {
            format.remove_prefix(2);
            if (TakeDigits(command, true) == 0) {
                return false;
            }
        } else if (format.starts_with("%0.")) {
            const auto decimals = static_cast<std::size_t>(format[3] - '0');
            format.remove_prefix(5);
            if (!TakeFixed(command, decimals)) {
                return false;
            }
        } else if (command.starts_with(format.front())) {
            command.remove_prefix(1);
            format.remove_prefix(1);
        } else {
            return false;
        }
    }
    return command.empty();
}

class ProtocolPageTests : public DeviceTest {
 protected:
    /// A whole life of the real device with products 9, 12 and 15 on COM3: the search, Init, the alarm settings, every
    /// channel, the configuration dialog, Close. Gives every command that it sent.
    std::set<std::string> CommandsOfALife() {
        ConnectProducts(platform, {9, 12, 15});
        platform.server.AnswerPayload("comport 9 0", "3");
        platform.server.AnswerPayload("listdev 12", "0 1");
        platform.server.AnswerPayload("status", " ");
        platform.server.AnswerPayload("findstat", "-1");
        for (const char* const max : {"readmax 9 0", "readmax 12 0", "readmax 12 1", "readmax 15 0"}) {
            platform.server.AnswerPayload(max, "95");
        }
        CDevApiInterface_Impl& device = MakeDevice(oko::kRealDevice);
        std::array<wchar_t, oko::kConfigurationTextLength> text{};
        ScriptedDialogs::Current().onConnection = [](CDevApiInterface_Impl&) { return DialogEnd::FindAndConnect; };
        device.ShowConnection(text.data(), 0, nullptr);
        device.ApplyConnection(L"m_iComPort 3");
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        device.ApplyConfiguration(L"");
        UseChannels(device);
        ScriptedDialogs::Current().onConfiguration = [](CDevApiInterface_Impl& shown) {
            TakeConfiguration(shown, [](int) { return std::wstring(L"1"); }, true);
            return DialogEnd::Ok;
        };
        EXPECT_EQ(device.ShowConfiguration(text.data(), 0, nullptr), oko::kSuccess);
        device.Close();
        const std::vector<std::string> sent = platform.server.Commands();
        return {sent.begin(), sent.end()};
    }

    static void UseChannels(CDevApiInterface_Impl& device) {
        double value = 0.0;
        for (int i = 0; i < device.GetTemperatureCount(); ++i) {
            device.m_pTemperature[static_cast<std::size_t>(i)]->GetCurrentTemperature(&value);
        }
        for (int i = 0; i < device.GetGasConcentrationCount(); ++i) {
            device.m_pGasConcentration[static_cast<std::size_t>(i)]->GetCurrentGasConcentration(&value);
        }
        EXPECT_EQ(device.m_pTemperature[0]->SetTargetTemperature(37.5), oko::kSuccess);
        EXPECT_EQ(device.m_pGasConcentration[0]->SetTargetGasConcentration(5.0), oko::kSuccess);
        EXPECT_EQ(device.m_pHumidifier[0]->SetTargetHumidity(62.7), oko::kSuccess);
    }
};

TEST_F(ProtocolPageTests, EveryFormat_HasItsRow) {
    std::multiset<std::string> formats;
    for (const Row& row : RowsOfThePage()) {
        formats.insert(row.format);
        EXPECT_TRUE(Fits(row.example, row.format)) << row.example;
    }
    EXPECT_EQ(formats, FormatsOfTheHeader());
    EXPECT_FALSE(formats.empty());
}

TEST_F(ProtocolPageTests, EveryExample_IsSent) {
    const std::set<std::string> sent = CommandsOfALife();
    for (const Row& row : RowsOfThePage()) {
        EXPECT_TRUE(sent.contains(row.example)) << row.example;
    }
}

TEST_F(ProtocolPageTests, EveryCommandThatIsSent_FitsARow) {
    const std::vector<Row> rows = RowsOfThePage();
    for (const std::string& command : CommandsOfALife()) {
        EXPECT_TRUE(std::ranges::any_of(rows, [&](const Row& row) { return Fits(command, row.format); })) << command;
    }
}

}  // namespace
