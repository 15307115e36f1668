// Everything that Init and Close send, command by command, for whole product sets.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "Fixture.h"
#include "ProductSets.h"
#include "RegistryNames.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/Result.h"

namespace {

using Commands = std::vector<std::string>;

/// What channel assignment asks of each product when all its sensors are listed and everything is present.
const std::map<int, Commands> kSetup{
    {7, {"readmin 7 0", "readmax 7 0", "readcurval 7(1)", "readcurval 7(2)", "readcurval 7(3)", "readcurval 7(4)"}},
    {8, {"readmin 8 0", "readmax 8 0", "bl-param-read 8 74", "bl-param-read 8 87", "bl-param-read 8 88"}},
    {9,
     {"readmin 9 0", "readmax 9 0", "bl-param-read 9 107", "bl-param-read 9 115", "bl-param-read 9 119",
      "bl-param-read 9 109", "bl-param-read 9 117", "bl-param-read 9 110", "bl-param-read 9 108", "bl-param-read 9 116",
      "bl-param-read 9 189", "bl-param-read 9 192", "bl-param-read 9 132"}},
    {10, {"readmin 10 0", "readmax 10 0"}},
    {11, {"readmin 11 0", "readmax 11 0"}},
    {12, {"readmin 12 0", "readmax 12 0", "readmin 12 1", "readmax 12 1"}},
    {13, {"readmin 13 0", "readmax 13 0", "readmin 13 1", "readmax 13 1"}},
    {14,
     {"readmin 14 0", "readmax 14 0", "bl-param-read 14 107", "bl-param-read 14 115", "bl-param-read 14 119",
      "bl-param-read 14 189", "bl-param-read 14 192", "bl-param-read 14 132", "bl-param-read 14 259"}},
    {15, {"readmin 15 0", "readmax 15 0", "bl-param-read 15 206", "bl-param-read 15 209"}},
    {16,
     {"readcurval 16(0)", "readmin 16 0", "readmax 16 0", "readcurval 16(1)", "readmin 16 1", "readmax 16 1",
      "readcurval 16(2)"}},
    {17,
     {"readmin 17 0", "readmax 17 0", "readcurval 17(1)", "readcurval 17(2)", "readcurval 17(3)", "readcurval 17(4)",
      "readcurval 17(5)", "readcurval 17(6)"}},
};

void Append(Commands& commands, const Commands& more) { commands.insert(commands.end(), more.begin(), more.end()); }

bool Contains(const std::vector<int>& products, int product) {
    return std::ranges::find(products, product) != products.end();
}

/// Every command of Init, in order. `mode` is 1 for the simulator.
Commands InitCommands(const std::vector<int>& products, int mode, int port) {
    const auto number = [](int value) { return std::to_string(value); };
    Commands commands{"listprod"};
    for (int product = 7; product <= 17; ++product) {
        commands.push_back("mode " + number(product) + " " + number(mode));
    }
    for (int product = 7; product <= 17; ++product) {
        commands.push_back("comport " + number(product) + " 0 " + number(port));
    }
    Append(commands, {"comport 12 1 " + number(port), "comport 13 1 " + number(port)});
    for (int product = 7; product <= 17; ++product) {
        commands.push_back("checkcon " + number(product));
    }
    Append(commands, {"listconprod", "comport " + number(products.front()) + " 0"});
    for (const int product : products) {
        commands.push_back("listdev " + number(product));
        if (product >= 8) {
            commands.push_back("bl-param-list " + number(product));
        }
    }
    Append(commands, {"start 1", "status"});
    for (const int product : products) {
        Append(commands, kSetup.at(product));
        const bool gas = product == 10 || product == 12 || product == 13;
        if (gas && !Contains(products, 15)) {
            Append(commands,
                   {"bl-param-read " + number(product) + " 206", "bl-param-read " + number(product) + " 209"});
        }
    }
    return commands;
}

Commands CloseCommands(const std::vector<int>& products) {
    Commands commands{"start 0"};
    for (const int product : products) {
        commands.push_back("connect " + std::to_string(product) + " 0");
    }
    return commands;
}

class InitialisationSequenceTests : public DeviceTest {
 protected:
    /// The commands in the communication log.
    static Commands Logged() {
        const std::wstring prefix = L"OKO-Lab bold line CommandSendSim: ";
        Commands commands;
        for (const std::wstring& line : HostLog::Lines()) {
            if (line.starts_with(prefix)) {
                const std::wstring command = line.substr(prefix.size(), line.find(L" -> ") - prefix.size());
                commands.emplace_back(command.begin(), command.end());
            }
        }
        return commands;
    }
};

TEST_F(InitialisationSequenceTests, RealDevice_WholeProductSets) {
    const std::vector<std::vector<int>> sets{{9, 12, 15}, {7, 11},    {8, 10},      {14, 13, 15},
                                             {16, 17},    {7, 8, 11}, {17, 15, 10}, {14, 16, 12}};
    for (const std::vector<int>& products : sets) {
        SCOPED_TRACE(testing::PrintToString(products));
        ConnectProducts(platform, products);
        platform.server.AnswerPayload("comport " + std::to_string(products.front()) + " 0", "6");
        CDevApiInterface_Impl& device = RealDevice();
        device.m_iComPort = 3;
        platform.server.ClearCommands();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(platform.server.Commands(), InitCommands(products, 0, 3));
        platform.server.ClearCommands();
        device.Close();
        EXPECT_EQ(platform.server.Commands(), CloseCommands(products));
    }
}

TEST_F(InitialisationSequenceTests, RealDevice_EachSingleProduct) {
    for (int product = 7; product <= 17; ++product) {
        SCOPED_TRACE(product);
        ConnectProducts(platform, {product});
        CDevApiInterface_Impl& device = RealDevice();
        platform.server.ClearCommands();
        EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
        EXPECT_EQ(platform.server.Commands(), InitCommands({product}, 0, 0));
        device.Close();
    }
}

TEST_F(InitialisationSequenceTests, Simulator_DefaultAnswer) {
    platform.registry.Set(kMiscKey, kLogValue, RegistryValue::Dword(1));
    CDevApiInterface_Impl& device = Simulator();
    EXPECT_EQ(device.Init(HostLog::Callback, nullptr), oko::kSuccess);
    EXPECT_EQ(Logged(), InitCommands({9, 12, 15}, 1, 1));
    HostLog::Reset();
    device.Close();
    EXPECT_EQ(Logged(), CloseCommands({9, 12, 15}));
}

}  // namespace
