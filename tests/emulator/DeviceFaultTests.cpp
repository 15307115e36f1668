#include "incubator/DeviceFault.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace emulator {

namespace {

using Kind = DeviceFault::Kind;

std::string Complaint(const std::string& text) {
    try {
        ParseDeviceFault(text);
    } catch (const DeviceFaultError& error) {
        return error.what();
    }
    return "(none)";
}

TEST(DeviceFaultTests, Words_NameTheFaultAndItsDevice) {
    struct Case {
        const char* text;
        DeviceFault fault;
    };
    for (const Case& row : std::vector<Case>{
             {"refuse-target 9 0", {Kind::RefuseTarget, 9, 0, 0.0, 0, {}}},
             {"ignore-target 12 1", {Kind::IgnoreTarget, 12, 1, 0.0, 0, {}}},
             {"freeze 9 0 for 30", {Kind::Freeze, 9, 0, 0.0, 0, 30.0}},
             {"freeze  9\t0  for 1m30s", {Kind::Freeze, 9, 0, 0.0, 0, 90.0}},
             {"drift 9 0 -0.5", {Kind::Drift, 9, 0, -0.5, 0, {}}},
             {"spike 9 0 5", {Kind::Spike, 9, 0, 5.0, 10, {}}},
             {"spike 9 0 5 3 for 0.5", {Kind::Spike, 9, 0, 5.0, 3, 0.5}},
             {"stuck-on 9 0", {Kind::StuckOn, 9, 0, 0.0, 0, {}}},
             {"stuck-off 9 0", {Kind::StuckOff, 9, 0, 0.0, 0, {}}},
             {"bottle-empty 12 0", {Kind::BottleEmpty, 12, 0, 0.0, 0, {}}},
             {"door-open", {Kind::DoorOpen, {}, {}, 0.0, 0, {}}},
             {"door-open for 30", {Kind::DoorOpen, {}, {}, 0.0, 0, 30.0}},
             {"door-open 9", {Kind::DoorOpen, 9, {}, 0.0, 0, {}}},
             {"unplug 12 for 1000000000", {Kind::Unplug, 12, {}, 0.0, 0, 1e9}},
             {"restart", {Kind::Restart, {}, {}, 0.0, 0, 5.0}},
             {"restart for 2", {Kind::Restart, {}, {}, 0.0, 0, 2.0}},
         }) {
        SCOPED_TRACE(row.text);
        EXPECT_TRUE(IsDeviceFault(row.text));
        const DeviceFault fault = ParseDeviceFault(row.text);
        EXPECT_EQ(fault, row.fault);
        EXPECT_EQ(ParseDeviceFault(FormatDeviceFault(fault)), fault) << FormatDeviceFault(fault);
    }
    EXPECT_EQ(FormatDeviceFault(ParseDeviceFault("spike 9 0 -2.5 for 90")), "spike 9 0 -2.5 10 for 90");
    EXPECT_EQ(FormatDeviceFault(ParseDeviceFault("door-open 9")), "door-open 9");
    EXPECT_FALSE(IsDeviceFault("silent"));
    EXPECT_FALSE(IsDeviceFault(""));
}

TEST(DeviceFaultTests, WrongWords_AreRefusedWithTheReason) {
    struct Case {
        const char* text;
        const char* complaint;
    };
    for (const Case& row : std::vector<Case>{
             {"frezze 9 0",
              "\"frezze\" is no fault of the device; there are refuse-target, ignore-target, freeze, drift, spike, "
              "stuck-on, stuck-off, bottle-empty, door-open, unplug and restart"},
             {"freeze", "the product is missing: write \"freeze PRODUCT DEVICE\""},
             {"freeze 9", "the device is missing: write \"freeze PRODUCT DEVICE\""},
             {"freeze 9 0 1", "\"1\" is too much: write \"freeze PRODUCT DEVICE\""},
             {"freeze nine 0",
              "the product must be a whole number from 0 on, not \"nine\": write \"freeze PRODUCT DEVICE\""},
             {"freeze 9 -1",
              "the device must be a whole number from 0 on, not \"-1\": write \"freeze PRODUCT DEVICE\""},
             {"freeze 9 0.5",
              "the device must be a whole number from 0 on, not \"0.5\": write \"freeze PRODUCT DEVICE\""},
             {"freeze 4294967305 0",
              "the product must be a whole number from 0 on, not \"4294967305\": write \"freeze "
              "PRODUCT DEVICE\""},
             {"freeze 9 0 for", "behind \"for\" a time is missing"},
             {"freeze 9 0 for 0", "\"for 0\" would end at once"},
             {"drift 9 0", "the units a minute is missing: write \"drift PRODUCT DEVICE UNITS\""},
             {"drift 9 0 1e7", "the units a minute must not be beyond 1000000: write \"drift PRODUCT DEVICE UNITS\""},
             {"spike 9 0 5 0",
              "the number of readings must be a whole number from 1 on, not \"0\": write \"spike "
              "PRODUCT DEVICE SIZE [EVERY]\""},
             {"spike 9 0 5 3 2", "\"2\" is too much: write \"spike PRODUCT DEVICE SIZE [EVERY]\""},
             {"bottle-empty 9 0", "product 9 has no gas bottle: those from 10 to 13 have"},
             {"bottle-empty 14 0", "product 14 has no gas bottle: those from 10 to 13 have"},
             {"door-open 9 0", "\"0\" is too much: write \"door-open [PRODUCT]\""},
             {"unplug", "the product is missing: write \"unplug PRODUCT\""},
             {"restart 9", "\"9\" is too much: write \"restart\""},
         }) {
        EXPECT_EQ(Complaint(row.text), row.complaint);
    }
    EXPECT_EQ(Complaint("freeze 9 0 for ever").substr(0, 32), "\"for\": \"ever\" is not a duration:");
    EXPECT_EQ(Complaint("freeze 9 0 for -5").substr(0, 30), "\"for\": \"-5\" is not a duration:");
    EXPECT_EQ(Complaint("drift 9 0 nan").substr(0, 24), "\"nan\" is not a number: w");
}

}  // namespace

}  // namespace emulator
