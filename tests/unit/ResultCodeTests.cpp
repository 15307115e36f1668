#include "link/ResultCode.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Fixture.h"
#include "ResultTexts.h"
#include "fakes/HostLog.h"

namespace {

class ResultCodeTests : public DeviceTest {};

TEST_F(ResultCodeTests, EachCode_HasItsTextOrNone) {
    CDevApiInterface_Impl& device = RealDevice();
    for (int code = -1; code <= 10; ++code) {
        LogResultCode(device, L"Some::Method", code);
    }
    EXPECT_EQ(HostLog::Lines(),
              (std::vector<std::wstring>{ResultLine(L"Some::Method", 1), ResultLine(L"Some::Method", 2),
                                         ResultLine(L"Some::Method", 3)}));
}

TEST_F(ResultCodeTests, WithoutACallback_NothingHappens) { LogResultCode(MakeDevice(0), L"Some::Method", 1); }

}  // namespace
