// A host may choose any locale for its process. Nothing on the wire and no value may change with it.

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale>

#include "Fixture.h"
#include "core/CDevApiInterface_Impl.h"

namespace {

/// A decimal comma for everything of the standard library that asks the C++ locale.
class CommaPoint : public std::numpunct<char> {
 protected:
    char do_decimal_point() const override { return ','; }
};

class LocaleTests : public DeviceTest {
 protected:
    LocaleTests() : m_before(std::locale::global(std::locale(std::locale::classic(), new CommaPoint))) {
        // The C library's part, where this machine has such a locale; the Windows tests prove it on the real run-time.
        for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
            if (std::setlocale(LC_ALL, name) != nullptr) {
                break;
            }
        }
    }
    ~LocaleTests() override {
        std::locale::global(m_before);
        std::setlocale(LC_ALL, "C");
    }

    std::locale m_before;
};

TEST_F(LocaleTests, CommandsAndValues_KeepTheDecimalPoint) {
    CDevApiInterface_Impl& device = RealDevice();
    auto& channel = *device.m_pTemperature[0];
    Assign(channel, 9, 0);
    platform.server.Answer("readcurval 9", "0_readcurval 9_36.512 \r");
    channel.SetTargetTemperature(37.5);
    EXPECT_EQ(platform.server.Commands().front(), "writesetpoint 9 0 37.5");
    double value = 0.0;
    channel.GetCurrentTemperature(&value);
    EXPECT_EQ(value, 36.512);
}

TEST_F(LocaleTests, SettingsTexts_KeepTheDecimalPoint) {
    CDevApiInterface_Impl& device = RealDevice();
    Assign(*device.m_pTemperature[0], 9, 0);
    device.ApplyConfiguration(L"dIncubatorBelow 1.25 | dIncubatorAbove 2.5");
    EXPECT_EQ(device.m_pTemperature[0]->m_dToleranceBelow, 1.25);
    EXPECT_EQ(platform.server.Commands().front(), "alarm 9 1.2");
}

TEST_F(LocaleTests, Simulator_KeepsTheDecimalPoint) {
    CDevApiInterface_Impl& device = Simulator();
    auto& channel = *device.m_pTemperature[0];
    Assign(channel, 9, 0);
    channel.m_dCurrent = 21.125;
    double value = 0.0;
    channel.GetCurrentTemperature(&value);
    EXPECT_EQ(value, 21.125);
}

}  // namespace
