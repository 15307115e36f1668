#include "net/Address.h"

#include <gtest/gtest.h>

#include <string>

namespace emulator {

namespace {

TEST(AddressTests, Servers_AreReadAsPeopleWriteThem) {
    struct Case {
        const char* text;
        const char* host;
        int port;
    };
    for (const Case& row : {Case{"192.168.1.5:60001", "192.168.1.5", 60001}, Case{"microscope", "microscope", 60000},
                            Case{"microscope:1", "microscope", 1}, Case{":60001", "127.0.0.1", 60001},
                            Case{"[::1]:60001", "::1", 60001}, Case{"[::1]", "::1", 60000},
                            Case{"fe80::1", "fe80::1", 60000}, Case{"localhost:65535", "localhost", 65535}}) {
        const auto address = ParseServerAddress(row.text);
        ASSERT_TRUE(address) << row.text << ": " << address.error;
        EXPECT_EQ(address->host, row.host) << row.text;
        EXPECT_EQ(address->port, row.port) << row.text;
    }
}

TEST(AddressTests, WhatIsNoServer_IsRefusedWithAnExample) {
    for (const char* const text :
         {"", "a:", "a:0", "a:65536", "a:x", "a:1x", "a:-1", "a b:1", "[::1", "udp://a:1", "[::1]60001"}) {
        const auto address = ParseServerAddress(text);
        EXPECT_FALSE(address) << text;
        EXPECT_NE(address.error.find('"' + std::string(text) + '"'), std::string::npos) << address.error;
    }
}

TEST(AddressTests, ThisComputer_IsFoundByNameOnItsIpv4Address) {
    EXPECT_EQ(AddressText(FindServer({"localhost", 60001})), "127.0.0.1:60001");
    EXPECT_EQ(AddressText(FindServer({"127.0.0.1", 1})), "127.0.0.1:1");
    EXPECT_EQ(AddressText(FindServer({"::1", 1})), "[::1]:1");
}

TEST(AddressTests, UnknownName_IsTold) {
    try {
        FindServer({"no-such-computer.invalid", 1});
        FAIL();
    } catch (const AddressError& error) {
        EXPECT_NE(std::string(error.what()).find("no-such-computer.invalid"), std::string::npos);
    }
}

}  // namespace

}  // namespace emulator
