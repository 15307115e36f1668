#include "transcript/Show.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "transcript/Transcript.h"

namespace emulator {

namespace {

std::string Show(std::string_view transcript, std::size_t width = 0) {
    return ShowTranscript(ReadTranscript(transcript), width);
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

TEST(ShowTests, Table_MarksWhatIsOdd) {
    EXPECT_EQ(Show("0.5 0.001\tstatus\t0_status_ \\r\n"
                   "1.5 0.25 0.5\treadcurval 9\t0_readcurval 9_36.5\\r\t2_readcurval 9_36.5\\r\n"
                   "2.5\tfind 9\t-\n"
                   "3.5\tx\t0_y_1\\r\n"
                   "4.5\tx\t0_x_1\n"
                   "5.5\tx\tnonsense\\r\n"
                   "6.5\tx\t\\0\n"
                   "7.5 0\t-\t0_x_\\r\n"),
              "seconds  delay ms  command       code  payload\n"
              "  0.500     1.000  status           0\n"
              "  1.500   250.000  readcurval 9     0  36.5        1 of 2 datagrams\n"
              "          500.000                   2  36.5        2 of 2 datagrams\n"
              "  2.500         -  find 9           -              no answer\n"
              "  3.500         -  x                0  1           echo of another command\n"
              "  4.500         -  x                -  0_x_1       no carriage return\n"
              "  5.500         -  x                -  nonsense\\r  no reply's form\n"
              "  6.500         -  x                -              empty\n"
              "  7.500     0.000  -                0              nobody asked\n"
              "\n"
              "7 exchanges, 1 without an answer, 1 datagram that nobody asked for\n"
              "result codes: 0 in 4 datagrams, 2 in 1 datagram and none in 3 datagrams\n"
              "delays: median 250.000 ms, 99 % within 500.000 ms, longest 500.000 ms (line 2)\n"
              "longest pause between two commands: 1 s (before line 2)\n");
}

TEST(ShowTests, EmptyTranscript_HasASummary) {
    EXPECT_EQ(Show(""), "seconds  delay ms  command  code  payload\n\n0 exchanges, 0 without an answer\n");
}

TEST(ShowTests, Delays_AreRankedNotAveraged) {
    std::string transcript;
    for (int i = 1; i <= 200; ++i) {
        transcript += "0 " + std::to_string(i) + "\tx\t0_x_\\r\n";
    }
    const std::string shown = Show(transcript);
    EXPECT_NE(shown.find("median 100000.000 ms, 99 % within 198000.000 ms, longest 200000.000 ms (line 200)"),
              std::string::npos)
        << shown;
}

TEST(ShowTests, RecordThatBeginsAnew_HasNoNegativePause) {
    const std::string shown = Show("10\tx\t-\n12\tx\t-\n0\tx\t-\n1\tx\t-\n");
    EXPECT_NE(shown.find("longest pause between two commands: 2 s (before line 2)"), std::string::npos) << shown;
    EXPECT_EQ(Show("5\tx\t-\n0\tx\t-\n").find("pause"), std::string::npos);
}

TEST(ShowTests, LongTexts_AreCutToTheWidth) {
    const std::string transcript = "0\t" + std::string(200, 'c') + "\t0_" + std::string(200, 'c') + "_" +
                                   std::string(60'000, 'p') + "\\r\n1\tx\t0_x_short\\r\n";
    for (const std::size_t width : {80U, 120U, 200U}) {
        const std::vector<std::string> lines = LinesOf(Show(transcript, width));
        EXPECT_EQ(lines.at(1).size(), width);
        EXPECT_TRUE(lines.at(1).ends_with("ppp...")) << lines.at(1);
        EXPECT_NE(lines.at(1).find("ccc...  "), std::string::npos) << lines.at(1);
        EXPECT_TRUE(lines.at(2).ends_with("short")) << lines.at(2);
    }
    EXPECT_GT(LinesOf(Show(transcript)).at(1).size(), 60'000U);
    EXPECT_TRUE(LinesOf(Show(transcript, 1)).at(1).ends_with("ppppppppp..."));
}

}  // namespace

}  // namespace emulator
