#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Fixture.h"
#include "RegistryNames.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Result.h"

namespace {

const std::wstring kKey = kSimulatorsKey;
const std::wstring kValue = kSimulatorAnswerValue;
constexpr const char* kDefault = "0_listconprod_9 12 15";

class SimulatorAnswerTests : public DeviceTest {
 protected:
    std::string Loaded() {
        CDevApiInterface_Impl& device = Simulator();
        device.LoadSimulatorAnswer();
        EXPECT_EQ(platform.registry.OpenKeys(), 0U);
        return device.m_szSimListconprod.data();
    }

    std::string LoadedWith(RegistryValue value) {
        platform.registry.Set(kKey, kValue, std::move(value));
        return Loaded();
    }

    void ExpectDefaultWritten() const {
        const auto written = platform.registry.Find(kKey, kValue);
        ASSERT_TRUE(written);
        EXPECT_EQ(*written, RegistryValue::Text(L"0_listconprod_9 12 15"));
        EXPECT_EQ(written->bytes.size(), 44U);
    }
};

TEST_F(SimulatorAnswerTests, NoKey_IsMadeWithTheDefault) {
    EXPECT_EQ(Loaded(), kDefault);
    ExpectDefaultWritten();
    EXPECT_EQ(platform.registry.Calls(),
              (std::vector<std::wstring>{L"open " + kKey, L"create " + kKey, L"open " + kKey,
                                         L"write " + kKey + L"\\" + kValue, L"close " + kKey}));
}

TEST_F(SimulatorAnswerTests, KeyThatCannotBeMade_LeavesTheDefault) {
    platform.registry.failCreate = true;
    EXPECT_EQ(Loaded(), kDefault);
    EXPECT_FALSE(platform.registry.HasKey(kKey));
}

TEST_F(SimulatorAnswerTests, KeyWithoutTheValue_GetsTheDefault) {
    platform.registry.AddKey(kKey);
    EXPECT_EQ(Loaded(), kDefault);
    ExpectDefaultWritten();
}

TEST_F(SimulatorAnswerTests, StoredText_TakesTheDefaultsPlace) {
    EXPECT_EQ(LoadedWith(RegistryValue::Text(L"0_listconprod_7 16")), "0_listconprod_7 16");
    EXPECT_EQ(LoadedWith(RegistryValue::Text(L"")), "");
    EXPECT_EQ(LoadedWith(RegistryValue::Text(L"garbage")), "garbage");
}

TEST_F(SimulatorAnswerTests, StoredTextWithoutATerminator_IsTakenWhole) {
    RegistryValue value = RegistryValue::Text(L"0_listconprod_8");
    value.bytes.resize(value.bytes.size() - 2);
    EXPECT_EQ(LoadedWith(value), "0_listconprod_8");
}

TEST_F(SimulatorAnswerTests, ValueOfAnotherType_IsIgnored) {
    EXPECT_EQ(LoadedWith(RegistryValue::Dword(1)), kDefault);
    EXPECT_EQ(LoadedWith(RegistryValue::Text(L"0_listconprod_7", 2)), kDefault);
    EXPECT_EQ(platform.registry.Find(kKey, kValue)->type, 2U);
}

TEST_F(SimulatorAnswerTests, LongText_IsCutAt255CharactersOrIgnored) {
    const std::wstring longest(258, L'x');  // with its terminator it still fits the buffer for 259 characters
    EXPECT_EQ(LoadedWith(RegistryValue::Text(longest)), std::string(255, 'x'));
    EXPECT_EQ(LoadedWith(RegistryValue::Text(std::wstring(255, L'x'))), std::string(255, 'x'));
    EXPECT_EQ(LoadedWith(RegistryValue::Text(std::wstring(254, L'x'))), std::string(254, 'x'));
    EXPECT_EQ(LoadedWith(RegistryValue::Text(std::wstring(259, L'x'))), kDefault);
    EXPECT_EQ(LoadedWith(RegistryValue::Text(std::wstring(4000, L'x'))), kDefault);
}

TEST_F(SimulatorAnswerTests, CharactersThatAreNoBytes_EndTheText) {
    EXPECT_EQ(LoadedWith(RegistryValue::Text(L"0_\u00B0_\u4E2D_9")), "0_\xB0_");
}

TEST_F(SimulatorAnswerTests, Init_UsesTheStoredProducts) {
    platform.registry.Set(kKey, kValue, RegistryValue::Text(L"0_listconprod_11"));
    CDevApiInterface_Impl& device = Simulator();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(device.GetTemperatureCount(), 0);
    EXPECT_EQ(device.GetGasConcentrationCount(), 1);
}

TEST_F(SimulatorAnswerTests, EveryInit_UsesWhatIsStoredByThen) {
    platform.registry.Set(kKey, kValue, RegistryValue::Text(L"0_listconprod_11"));
    CDevApiInterface_Impl& device = Simulator();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    device.Close();
    platform.registry.Set(kKey, kValue, RegistryValue::Text(L"0_listconprod_12"));
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(device.GetGasConcentrationCount(), 2);
}

TEST_F(SimulatorAnswerTests, Init_GarbageAnswers_GiveChannelsOrNoneButNoHarm) {
    for (const std::wstring answer : {L"", L"garbage", L"_", L"__", L"0_listconprod_", L"0_listconprod_-5 x 9",
                                      L"0_listconprod_9999999", L"0_listconprod_9 9 9 9 9 9 9 9 9", L"0__7\r8", L"9"}) {
        SCOPED_TRACE(answer);
        platform.registry.Set(kKey, kValue, RegistryValue::Text(answer));
        CDevApiInterface_Impl& device = Simulator();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_LE(device.GetTemperatureCount(), 16);
        EXPECT_LE(device.GetGasConcentrationCount(), 4);
        device.Close();
    }
}

}  // namespace
