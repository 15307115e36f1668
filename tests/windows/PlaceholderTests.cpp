// The placeholder that stands for a silent port, and how it hands the port over: no command may go unanswered, however
// busy the machine is.

#include "EmulatorProcess.h"
#include "LoopbackClient.h"

namespace {

TEST(PlaceholderTests, PlaceholderThatMakesRoom_StillAnswersWhoeverComesFirst) {
    const EmulatorProcess placeholder(L"--placeholder");
    const LoopbackClient client;
    EXPECT_EQ(client.Ask("listprod"), "");
    EXPECT_EQ(client.Ask("oko-control-emulator: make room"), "oko-control-emulator: room made");
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(client.Ask("listprod"), "");  // more probes than the handover has time slices
    }
}

}  // namespace
