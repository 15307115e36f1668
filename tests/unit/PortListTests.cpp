#include "ui/PortList.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "Fixture.h"

namespace {

class PortListTests : public DeviceTest {
 protected:
    static std::vector<std::wstring> Labels(const std::vector<PortEntry>& entries) {
        std::vector<std::wstring> labels;
        for (const PortEntry& entry : entries) {
            labels.push_back(entry.label);
        }
        return labels;
    }
};

TEST_F(PortListTests, FreeAndBusyPorts_AreListedInOrderWithTheirMarks) {
    platform.ports.existing = {L"COM12", L"COM3", L"COM1"};
    platform.ports.busy = {L"COM3"};
    const std::vector<PortEntry> entries = ListPorts();
    EXPECT_EQ(Labels(entries), (std::vector<std::wstring>{L"COM1", L"COM3 (busy)", L"COM12"}));
    EXPECT_EQ(entries[2].number, 12);
    EXPECT_EQ(platform.ports.opened, (std::vector<std::wstring>{L"COM1", L"COM3", L"\\\\.\\COM12"}));
}

TEST_F(PortListTests, Search_AsksForPorts1To64) {
    EXPECT_TRUE(ListPorts().empty());
    ASSERT_EQ(platform.ports.queried.size(), 64U);
    EXPECT_EQ(platform.ports.queried.front(), L"COM1");
    EXPECT_EQ(platform.ports.queried.back(), L"COM64");
    EXPECT_TRUE(platform.ports.opened.empty());
}

TEST_F(PortListTests, OpenName_TenAndAbove_IsTheDevicePath) {
    EXPECT_EQ(PortOpenName(9), L"COM9");
    EXPECT_EQ(PortOpenName(10), L"\\\\.\\COM10");
    EXPECT_EQ(PortOpenName(64), L"\\\\.\\COM64");
}

TEST_F(PortListTests, Selection_IsThePortOrTheFirstEntry) {
    const std::vector<std::int32_t> ports{1, 3, 12};
    EXPECT_EQ(SelectedPort(ports, 3), 1U);
    EXPECT_EQ(SelectedPort(ports, 12), 2U);
    EXPECT_EQ(SelectedPort(ports, 5), 0U);
    EXPECT_EQ(SelectedPort({}, 5), 0U);
}

TEST_F(PortListTests, Choice_WithoutASelection_KeepsThePreviousPort) {
    const std::vector<std::int32_t> ports{1, 3, 12};
    EXPECT_EQ(ChosenPort(ports, 2, 7), 12);
    EXPECT_EQ(ChosenPort(ports, -1, 7), 7);
    EXPECT_EQ(ChosenPort(ports, 3, 7), 7);
    EXPECT_EQ(ChosenPort({}, 0, 7), 7);
}

}  // namespace
