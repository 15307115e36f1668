#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

#include "Fixture.h"
#include "oko/INotify.h"

namespace {

struct Named {
    int product;
    int channel;
    const wchar_t* name;
};

const std::vector<Named> kTemperatures{
    {7, 0, L"H501-T Base"},      {7, 1, L"H501-T Lid"},
    {7, 2, L"Humidity"},         {7, 3, L"Objective"},
    {7, 4, L"Free sensor"},      {8, 0, L"H201-T"},
    {8, 74, L"Air heater"},      {8, 87, L"Cage"},
    {8, 88, L"Sample"},          {9, 0, L"H301-T"},
    {9, 107, L"Base"},           {9, 108, L"Lid"},
    {9, 109, L"Humidity #1"},    {9, 110, L"Humidity #2"},
    {9, 119, L"Free sensor"},    {9, 132, L"Room"},
    {9, 189, L"Objective"},      {10, 0, L"H101-T"},
    {10, 107, L"Base"},          {10, 119, L"Free sensor"},
    {10, 132, L"Room"},          {10, 189, L"Objective"},
    {10, 206, L"Humidifier"},    {10, 209, L"Sensing cell"},
    {10, 259, L"Water bath"},    {12, 0, L"H101-T"},
    {12, 107, L"Base"},          {12, 119, L"Free sensor"},
    {12, 132, L"Room"},          {12, 189, L"Objective"},
    {12, 206, L"Humidifier"},    {12, 209, L"Sensing cell"},
    {12, 259, L"Water bath"},    {13, 0, L"H101-T"},
    {13, 107, L"Base"},          {13, 119, L"Free sensor"},
    {13, 132, L"Room"},          {13, 189, L"Objective"},
    {13, 206, L"Humidifier"},    {13, 209, L"Sensing cell"},
    {13, 259, L"Water bath"},    {14, 0, L"H101-T"},
    {14, 107, L"Base"},          {14, 119, L"Free sensor"},
    {14, 132, L"Room"},          {14, 189, L"Objective"},
    {14, 259, L"Water bath"},    {15, 0, L"H301-HM-ACTIVE"},
    {15, 206, L"Humidifier"},    {15, 209, L"Sensing cell"},
    {16, 0, L"H401-T Device 1"}, {16, 1, L"H401-T Device 2"},
    {16, 132, L"T sensor"},      {17, 0, L"Main"},
    {17, 1, L"Chamber"},         {17, 2, L"Lid"},
    {17, 3, L"Humidifier"},      {17, 4, L"Objective Heater"},
    {17, 5, L"Heated tube"},     {17, 6, L"T sensor"},
};
constexpr int kAnyChannel = -1000;  // the row holds for every channel of its product

const std::vector<Named> kGases{{10, kAnyChannel, L"CO2"}, {11, kAnyChannel, L"O2"},
                                {12, 0, L"CO2"},           {12, 1, L"O2"},
                                {13, 0, L"CO2"},           {13, 1, L"O2"}};

class ChannelNamesTests : public DeviceTest {
 protected:
    /// What a channel writes into a buffer of '#', up to the first of them.
    template <class Channel>
    static std::wstring NameOf(Channel& channel, int product, int number) {
        Assign(channel, product, number);
        std::array<wchar_t, 40> buffer;
        buffer.fill(L'~');
        EXPECT_EQ(channel.GetName(buffer.data(), 40), 0);
        const std::wstring text(buffer.begin(), buffer.end());
        return text.substr(0, text.find(L'~'));
    }

    /// Every product and channel: the named ones have their names, all others none.
    template <class Channel>
    static void ExpectExactly(Channel& channel, const std::vector<Named>& names) {
        for (int product = 0; product <= 20; ++product) {
            for (int number = -1; number <= 300; ++number) {
                const auto named = std::ranges::find_if(names, [&](const Named& row) {
                    return row.product == product && (row.channel == number || row.channel == kAnyChannel);
                });
                EXPECT_EQ(NameOf(channel, product, number), named != names.end() ? named->name : L"")
                    << product << " " << number;
            }
        }
    }
};

TEST_F(ChannelNamesTests, Temperatures_HaveTheNamesOfTheTable) {
    ExpectExactly(*MakeDevice(0).m_pTemperature[0], kTemperatures);
}

TEST_F(ChannelNamesTests, Gases_HaveTheNamesOfTheTable) {
    ExpectExactly(*MakeDevice(0).m_pGasConcentration[0], kGases);
}

TEST_F(ChannelNamesTests, Humidifiers_AreNamedByTheirProduct) {
    auto& channel = *MakeDevice(0).m_pHumidifier[0];
    for (int product = 0; product <= 20; ++product) {
        for (const int number : {0, 1, 206}) {
            EXPECT_EQ(NameOf(channel, product, number), product == 15 ? L"H301-HM-ACTIVE" : L"")
                << product << " " << number;
        }
    }
}

TEST_F(ChannelNamesTests, Buffer_OfEachLength_GetsThatManyCharactersAndNoTerminator) {
    auto& channel = *MakeDevice(0).m_pTemperature[0];
    Assign(channel, 7, 0);
    const std::wstring name = L"H501-T Base";
    for (std::size_t length = 0; length <= 20; ++length) {
        SCOPED_TRACE(length);
        std::wstring buffer(21, L'#');
        EXPECT_EQ(channel.GetName(buffer.data(), static_cast<std::int32_t>(length)), 0);
        const std::wstring copied = name.substr(0, length);
        EXPECT_EQ(buffer, copied + std::wstring(21 - copied.size(), L'#'));
    }
    wchar_t untouched = L'#';
    EXPECT_EQ(channel.GetName(&untouched, -1), 0);
    EXPECT_EQ(untouched, L'#');
}

TEST_F(ChannelNamesTests, NullBuffer_Fails) {
    CDevApiInterface_Impl& device = MakeDevice(0);
    EXPECT_EQ(device.m_pTemperature[0]->GetName(nullptr, 10), -1);
    EXPECT_EQ(device.m_pGasConcentration[0]->GetName(nullptr, 10), -1);
    EXPECT_EQ(device.m_pHumidifier[0]->GetName(nullptr, 10), -1);
}

TEST_F(ChannelNamesTests, EveryName_FitsTheLengthThatHostsAreTold) {
    for (const Named& row : kTemperatures) {
        EXPECT_LT(std::wcslen(row.name), static_cast<std::size_t>(oko::kChannelNameLength)) << row.name;
    }
}

}  // namespace
