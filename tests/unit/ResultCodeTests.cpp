#include "link/ResultCode.h"

#include "Fixture.h"

namespace {

class ResultCodeTests : public DeviceTest {};

TEST_F(ResultCodeTests, EachCode_HasItsTextOrNone) {
    CDevApiInterface_Impl& device = RealDevice();
    for (int code = -1; code <= 10; ++code) {
        LogResultCode(device, L"Some::Method", code);
    }
    EXPECT_EQ(
        HostLog::Lines(),
        (std::vector<std::wstring>{
            L"Some::Method Some problems within OC, not with the Product the current command refers to.",
            L"Some::Method There is a problem with the Product the current command refers to. The command will be "
            L"however executed correctly.",
            L"Some::Method There is a problem with the Product the current command refers to. The command will not "
            L"be executed."}));
}

TEST_F(ResultCodeTests, WithoutACallback_NothingHappens) { LogResultCode(MakeDevice(0), L"Some::Method", 1); }

}  // namespace
