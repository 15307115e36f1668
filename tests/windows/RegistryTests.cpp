// The registry values that the library reads, on the machine's real registry.

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "LoadedLibrary.h"
#include "RegistryNames.h"
#include "oko/CDevApiInterface.h"

namespace {

class RegistryTests : public testing::Test {
 protected:
    RegistryTests() {
        RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark");
        HostRecord::Current() = {};
    }
    ~RegistryTests() override { RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Vellmark"); }

    static void Set(const wchar_t* key, const wchar_t* name, DWORD type, const void* data, std::size_t size) {
        EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, name, type, data, static_cast<DWORD>(size)), ERROR_SUCCESS);
    }
    static void SetText(const wchar_t* key, const wchar_t* name, const std::wstring& text) {
        Set(key, name, REG_SZ, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
    }

    /// Whether Init of the simulator writes the communication log.
    bool Logs() {
        HostRecord::Current() = {};
        CDevApiInterface& device = m_library.Device(1);
        EXPECT_EQ(device.Init(HostRecord::Callback, nullptr), 0);
        device.Close();
        return HostRecord::CountLines(L"OKO-Lab bold line CommandSendSim: listprod -> 0_listprod_") > 0;
    }

    /// The live channels after Init of the simulator: temperatures, gases, humidifiers.
    std::vector<int> Counts() {
        CDevApiInterface& device = m_library.Device(1);
        EXPECT_EQ(device.Init(nullptr, nullptr), 0);
        const std::vector<int> counts{device.GetTemperatureCount(), device.GetGasConcentrationCount(),
                                      device.GetHumidifierCount()};
        device.Close();
        return counts;
    }

    /// The stored answer, with its terminator, as bytes long as it is.
    static std::wstring Stored(DWORD* sizeBytes) {
        std::array<wchar_t, 300> text{};
        *sizeBytes = sizeof text;
        EXPECT_EQ(RegGetValueW(HKEY_LOCAL_MACHINE, kSimulatorsKey, kSimulatorAnswerValue, RRF_RT_REG_SZ, nullptr,
                               text.data(), sizeBytes),
                  ERROR_SUCCESS);
        return text.data();
    }

    LoadedLibrary m_library;
};

const std::vector<int> kDefaultCounts{10, 2, 1};

TEST_F(RegistryTests, LogCommunication_OnlyTheNumber1SwitchesTheLogOn) {
    EXPECT_FALSE(Logs());
    const DWORD numbers[] = {0, 1, 2};
    for (const DWORD& number : numbers) {
        Set(kMiscKey, kLogValue, REG_DWORD, &number, sizeof number);
        EXPECT_EQ(Logs(), number == 1) << number;
    }
    SetText(kMiscKey, kLogValue, L"1");
    EXPECT_FALSE(Logs());
    const ULONGLONG wide = 1;
    Set(kMiscKey, kLogValue, REG_QWORD, &wide, sizeof wide);
    EXPECT_FALSE(Logs());
    const DWORD one = 1;
    Set(kMiscKey, kLogValue, REG_BINARY, &one, sizeof one);
    EXPECT_FALSE(Logs());
}

TEST_F(RegistryTests, Answer_WithoutAKey_IsMadeWithTheDefault) {
    EXPECT_EQ(Counts(), kDefaultCounts);
    DWORD size = 0;
    EXPECT_EQ(Stored(&size), L"0_listconprod_9 12 15");
    EXPECT_EQ(size, 44U);
}

TEST_F(RegistryTests, Answer_KeyWithoutTheValue_GetsTheDefault) {
    SetText(kSimulatorsKey, L"Another", L"value");
    EXPECT_EQ(Counts(), kDefaultCounts);
    DWORD size = 0;
    EXPECT_EQ(Stored(&size), L"0_listconprod_9 12 15");
}

TEST_F(RegistryTests, Answer_OfOtherProducts_GivesTheirChannels) {
    SetText(kSimulatorsKey, kSimulatorAnswerValue, L"0_listconprod_7 11");
    EXPECT_EQ(Counts(), (std::vector<int>{5, 1, 0}));
    SetText(kSimulatorsKey, kSimulatorAnswerValue, L"0_listconprod_16 17");
    EXPECT_EQ(Counts(), (std::vector<int>{10, 0, 0}));
}

TEST_F(RegistryTests, Answer_OfAnotherType_IsIgnored) {
    const DWORD number = 7;
    Set(kSimulatorsKey, kSimulatorAnswerValue, REG_DWORD, &number, sizeof number);
    EXPECT_EQ(Counts(), kDefaultCounts);
}

TEST_F(RegistryTests, Answer_LongerThanItsBuffer_IsIgnored) {
    SetText(kSimulatorsKey, kSimulatorAnswerValue, L"0_listconprod_7" + std::wstring(400, L' '));
    EXPECT_EQ(Counts(), kDefaultCounts);
}

TEST_F(RegistryTests, Answer_WithoutATerminatorOrOfOddSize_IsTaken) {
    const std::wstring text = L"0_listconprod_11";
    Set(kSimulatorsKey, kSimulatorAnswerValue, REG_SZ, text.c_str(), text.size() * sizeof(wchar_t));
    EXPECT_EQ(Counts(), (std::vector<int>{0, 1, 0}));
    Set(kSimulatorsKey, kSimulatorAnswerValue, REG_SZ, text.c_str(), text.size() * sizeof(wchar_t) - 1);
    EXPECT_EQ(Counts()[0], 0);
}

TEST_F(RegistryTests, Answer_Garbage_DoesNoHarm) {
    for (const wchar_t* const text : {L"", L"garbage", L"0_listconprod_", L"\u4E2D\u6587", L"0_listconprod_9 9 9 9"}) {
        SCOPED_TRACE(testing::PrintToString(std::wstring(text)));
        SetText(kSimulatorsKey, kSimulatorAnswerValue, text);
        const std::vector<int> counts = Counts();
        EXPECT_LE(counts[0], 16);
        EXPECT_LE(counts[1], 4);
    }
}

}  // namespace
