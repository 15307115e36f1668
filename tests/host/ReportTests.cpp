// A log as a page in one file.

#include "page/Report.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <regex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keep/CsvReader.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "page/ReportData.h"

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t kBegin = 1'795'297'200'000;

/// A log of one temperature channel, a row a second.
Log MakeLog(const std::vector<double>& current, double target = 37.0) {
    Log log;
    log.header.device = {"OKO-Lab bold line Simulator", true, std::nullopt};
    log.header.channels = {{ChannelKind::Temperature, 0, "H301-T", "H301-T", true, 25.0, 60.0, 0.5, 0.5}};
    log.columns.resize(1);
    for (const double value : current) {
        log.timeMs.push_back(kBegin + static_cast<std::int64_t>(log.timeMs.size()) * 1000);
        log.columns[0].current.push_back(value);
        log.columns[0].target.push_back(std::isnan(value) ? kNone : target);
        log.columns[0].state.push_back(std::isnan(value) ? ChannelState::NoAnswer : ChannelState::Within);
    }
    return log;
}

/// Reads columns as the page's script does.
class ColumnReader {
 public:
    explicit ColumnReader(std::string bytes) : m_bytes(std::move(bytes)) {}

    std::vector<double> Column(std::size_t rows, int decimals) {
        std::vector<double> values;
        std::int64_t last = 0;
        std::uint64_t code = 0;
        while (values.size() < rows) {
            const std::uint64_t number = Number();
            const std::uint64_t count = number == 1 ? Number() : 1;
            code = number == 1 ? code : number;
            for (std::uint64_t i = 0; i < count; ++i) {
                if (code == 0) {
                    values.push_back(kNone);
                    continue;
                }
                const auto folded = static_cast<std::int64_t>(code - 2);
                last += folded % 2 == 0 ? folded / 2 : -(folded + 1) / 2;
                values.push_back(static_cast<double>(last) / std::pow(10.0, decimals));
            }
        }
        return values;
    }

    bool AtEnd() const { return m_at == m_bytes.size(); }

 private:
    std::uint64_t Number() {
        std::uint64_t number = 0;
        for (unsigned shift = 0;; shift += 7) {
            const auto byte = static_cast<unsigned char>(m_bytes.at(m_at++));
            number |= static_cast<std::uint64_t>(byte & 127U) << shift;
            if (byte < 128) {
                return number;
            }
        }
    }

    std::string m_bytes;
    std::size_t m_at = 0;
};

std::string Coded(const std::vector<double>& values, int decimals) {
    std::string bytes;
    AppendColumn(bytes, values, decimals);
    return bytes;
}

void ExpectSame(const std::vector<double>& values, const std::vector<double>& expected) {
    ASSERT_EQ(values.size(), expected.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_TRUE(values[i] == expected[i] || (std::isnan(values[i]) && std::isnan(expected[i])))
            << i << ": " << values[i] << " for " << expected[i];
    }
}

TEST(ReportData, ColumnIsReadBackExactly) {
    const std::vector<std::vector<double>> columns{
        {},
        {kNone},
        {kNone, kNone, kNone, 37.1, 37.1, kNone, 37.1},
        {0.0, -0.5, 0.5, 100.25, -273.15, 0.01},
        {37.0, 37.0, 37.0, 37.0, 38.5, 38.5},
        {1e9, -1e9, 0.000001},
        {1.0, 2.0, 3.0, 4.0, 4.0, 4.0, 3.0, 2.0},
    };
    for (const std::vector<double>& column : columns) {
        const int decimals = DecimalsOf(column, {});
        ColumnReader reader(Coded(column, decimals));
        ExpectSame(reader.Column(column.size(), decimals), column);
        EXPECT_TRUE(reader.AtEnd());
    }
}

TEST(ReportData, EveryHundredthIsReadBackExactly) {
    std::vector<double> column;
    for (int i = -30'000; i <= 30'000; i += 7) {
        column.push_back(static_cast<double>(i) / 100.0);
    }
    EXPECT_EQ(DecimalsOf(column, {}), 2);
    ColumnReader reader(Coded(column, 2));
    ExpectSame(reader.Column(column.size(), 2), column);
}

TEST(ReportData, DecimalsAreAsManyAsTheValuesHave) {
    const std::vector<double> whole{1.0, kNone, -3.0};
    const std::vector<double> tenths{1.0, 37.1};
    EXPECT_EQ(DecimalsOf(whole, {}), 0);
    EXPECT_EQ(DecimalsOf(whole, tenths), 1);
    EXPECT_EQ(DecimalsOf(tenths, whole), 1);
}

TEST(ReportData, ValueOfManyDigitsIsToldToAMillionth) {
    const std::vector<double> column{36.123456789, 1.0 / 3.0};
    EXPECT_EQ(DecimalsOf(column, {}), 6);
    ColumnReader reader(Coded(column, 6));
    const std::vector<double> read = reader.Column(2, 6);
    EXPECT_NEAR(read[0], column[0], 5e-7);
    EXPECT_NEAR(read[1], column[1], 5e-7);
}

TEST(ReportData, ValueThatStaysTakesNoRoom) {
    const std::vector<double> column(100'000, 37.5);
    EXPECT_LT(Coded(column, 1).size(), 10U);
}

TEST(ReportData, HugeValueDoesNoHarm) {
    const std::vector<double> column{1e300, -1e300, 5.0};
    ColumnReader reader(Coded(column, 0));
    EXPECT_EQ(reader.Column(3, 0)[2], 5.0);
}

TEST(ReportData, Base64IsTheUsualOne) {
    EXPECT_EQ(Base64(""), "");
    EXPECT_EQ(Base64("f"), "Zg==");
    EXPECT_EQ(Base64("fo"), "Zm8=");
    EXPECT_EQ(Base64("foo"), "Zm9v");
    EXPECT_EQ(Base64("\xFB\xFF\xFE?"), "+//+Pw==");
}

nlohmann::json HeadOf(const Log& log) {
    const std::vector<int> decimals(log.columns.size(), 2);
    return nlohmann::json::parse(ReportHead(log, "night.csv", decimals));
}

TEST(ReportData, HeadNamesDeviceAndFile) {
    const nlohmann::json head = HeadOf(MakeLog({37.0, 37.5}));
    EXPECT_EQ(head["device"], "OKO-Lab bold line Simulator");
    EXPECT_EQ(head["simulated"], true);
    EXPECT_EQ(head["port"], nullptr);
    EXPECT_EQ(head["file"], "night.csv");
    EXPECT_EQ(head["interval"], 1.0);
    EXPECT_EQ(head["rows"], 2);
    EXPECT_EQ(head["firstMs"], kBegin);
    EXPECT_EQ(head["lastMs"], kBegin + 1000);
}

TEST(ReportData, SummaryHasWhatTheChannelDid) {
    const nlohmann::json channel = HeadOf(MakeLog({37.0, 38.0, kNone, 36.0, 37.0}))["channels"][0];
    EXPECT_EQ(channel["name"], "H301-T");
    EXPECT_EQ(channel["unit"], "\u00B0C");
    EXPECT_EQ(channel["least"], 36.0);
    EXPECT_EQ(channel["mean"], 37.0);
    EXPECT_EQ(channel["greatest"], 38.0);
    EXPECT_EQ(channel["reads"], 5);
    EXPECT_EQ(channel["failedReads"], 1);
}

TEST(ReportData, TimeInBandIsTheShareOfTime) {
    const nlohmann::json channel = HeadOf(MakeLog({37.0, 37.0, 37.0, 39.0, 37.0}))["channels"][0];
    EXPECT_DOUBLE_EQ(channel["inBand"], 0.75);
}

TEST(ReportData, TimeBetweenTwoRunsIsNotInBand) {
    Log log = MakeLog({37.0, 37.0, 39.0, 39.0});
    // An hour passed before the third row, after a value in the band.
    log.timeMs[2] += 3'600'000;
    log.timeMs[3] += 3'600'000;
    const nlohmann::json channel = HeadOf(log)["channels"][0];
    EXPECT_LE(channel["inBand"].get<double>(), 0.8);
}

TEST(ReportData, ChannelWithoutValuesHasNoSummary) {
    const nlohmann::json channel = HeadOf(MakeLog({kNone, kNone}))["channels"][0];
    EXPECT_EQ(channel["least"], nullptr);
    EXPECT_EQ(channel["mean"], nullptr);
    EXPECT_EQ(channel["inBand"], nullptr);
    EXPECT_EQ(channel["failedReads"], 2);
}

TEST(ReportData, EventsAreToldInTheShapeOfTheLivePage) {
    Log log = MakeLog({37.0});
    log.events = {{1, {kBegin, 0.0}, EventKind::TargetChanged, "H301-T", "37 -> \"38\""}};
    EXPECT_EQ(HeadOf(log)["events"], nlohmann::json::parse(R"([{"id":1,"time":"2026-11-21T21:40:00.000Z",
        "timeMs":1795297200000,"kind":"target changed","channel":"H301-T","text":"37 -> \"38\""}])"));
}

TEST(ReportData, RowsOfAClockThatWasSetBackAreInOrder) {
    Log log = MakeLog({1.0, 2.0, 3.0});
    log.timeMs = {kBegin + 2000, kBegin, kBegin + 1000};
    const Log sorted = SortedByTime(log);
    EXPECT_EQ(sorted.timeMs, (std::vector<std::int64_t>{kBegin, kBegin + 1000, kBegin + 2000}));
    EXPECT_EQ(sorted.columns[0].current, (std::vector<double>{2.0, 3.0, 1.0}));
}

TEST(Report, IsOneFileThatNamesNoOther) {
    const std::string page = MakeReport(MakeLog({37.0, 37.5}), "night.csv");
    EXPECT_FALSE(std::regex_search(page.substr(0, page.find("<style>")), std::regex("(src|href)=\"(?!#|data:)")));
    EXPECT_EQ(page.find("<script src"), std::string::npos);
    EXPECT_EQ(page.find("rel=\"stylesheet\""), std::string::npos);
    EXPECT_NE(page.find("default-src 'none'"), std::string::npos);
    EXPECT_NE(page.find("@license https://github.com/danvk/dygraphs"), std::string::npos);
    EXPECT_TRUE(page.ends_with("</html>\n"));
}

TEST(Report, TextOfAnEventDoesNotEndTheScript) {
    Log log = MakeLog({37.0});
    log.events = {{1, {kBegin, 0.0}, EventKind::Log, "", "</script><script>alert(1)</script><!--"}};
    const std::string page = MakeReport(log, "<b>.csv");
    EXPECT_EQ(page.find("alert(1)</script>"), std::string::npos);
    EXPECT_EQ(page.find("<!--"), std::string::npos);
    const std::size_t begin = page.find("id=\"report-head\">") + std::string_view("id=\"report-head\">").size();
    const nlohmann::json head = nlohmann::json::parse(page.substr(begin, page.find("</script>", begin) - begin));
    EXPECT_EQ(head["events"][0]["text"], log.events[0].text);
    EXPECT_EQ(head["file"], "<b>.csv");
}

TEST(Report, LogWithoutRowsGivesAPage) {
    EXPECT_NE(MakeReport(MakeLog({}), "empty.csv").find("\"rows\":0"), std::string::npos);
}

/// The least of some tries, in seconds of this process: others may be busy meanwhile.
double SecondsOf(const Log& log) {
    double least = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 5; ++i) {
        const std::clock_t begin = std::clock();
        EXPECT_FALSE(MakeReport(log, "night.csv").empty());
        least = std::min(least, static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC);
    }
    return least;
}

Log LongLog(std::size_t rows) {
    std::vector<double> values;
    for (std::size_t i = 0; i < rows; ++i) {
        values.push_back(37.0 + static_cast<double>(i * 7919 % 101) / 100.0);
    }
    return MakeLog(values);
}

TEST(Report, FourTimesTheRowsTakeAboutFourTimesAsLong) {
    constexpr double kQuadratic = 16.0;
    EXPECT_LT(SecondsOf(LongLog(40'000)) / SecondsOf(LongLog(10'000)), kQuadratic / 2.0);
}

}  // namespace
