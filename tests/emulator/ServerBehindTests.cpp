#include "net/ServerBehind.h"

#include <gtest/gtest.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/udp.hpp>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <system_error>

#include "../Patience.h"
#include "Loopback.h"
#include "net/UdpServer.h"

namespace emulator {

namespace {

namespace fs = std::filesystem;
using boost::asio::ip::udp;

/// A server's program that only writes down where it is and what it is told.
class ServerBehindTests : public testing::Test {
 protected:
    ServerBehindTests() {
        fs::remove_all(folder);
        fs::create_directories(folder);
        std::ofstream(program) << "#!/bin/sh\nprintf '<%s>' \"$@\" > told.tmp\nmv told.tmp told.txt\n";
        fs::permissions(program, fs::perms::owner_all);
    }
    ~ServerBehindTests() override {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    /// What the program wrote in its own folder, when it has.
    std::string Told() const {
        EXPECT_TRUE(Await([this] { return fs::exists(folder / "told.txt"); }));
        std::ifstream file(folder / "told.txt");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    fs::path folder = fs::temp_directory_path() /
                      ("oko behind " + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
                       " " + std::to_string(std::random_device{}()));
    fs::path program = folder / "server";
    boost::asio::io_context context;
};

#ifndef _WIN32
TEST_F(ServerBehindTests, FreePort_StartsTheServerInItsFolderWithItsWords) {
    const int port = NobodyThere(context).port();
    const ServerBehind behind = StartServerBehind(context, program, port);
    EXPECT_EQ(behind.state, BehindState::Started) << behind.sentence;
    EXPECT_EQ(Told(), "<server><address=localhost><port=" + std::to_string(port) + ">");
}
#endif

TEST_F(ServerBehindTests, TakenPort_StartsNothing) {
    for (const auto& address : {boost::asio::ip::address_v4::loopback(), boost::asio::ip::address_v4::any()}) {
        const udp::socket taken(context, udp::endpoint(address, 0));
        const int port = taken.local_endpoint().port();
        EXPECT_TRUE(IsPortTaken(context, port));
        const ServerBehind behind = StartServerBehind(context, folder / "no such program", port);
        EXPECT_EQ(behind.state, BehindState::RunsAlready) << behind.sentence;
        EXPECT_NE(behind.sentence.find(std::to_string(port)), std::string::npos) << behind.sentence;
    }
}

TEST_F(ServerBehindTests, ProgramThatIsNotThere_IsAReason) {
    const ServerBehind behind = StartServerBehind(context, folder / "no such program", NobodyThere(context).port());
    EXPECT_EQ(behind.state, BehindState::Failed);
    EXPECT_NE(behind.sentence.find("no such program"), std::string::npos) << behind.sentence;
}

}  // namespace

}  // namespace emulator
