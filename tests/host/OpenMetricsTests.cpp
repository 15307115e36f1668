// What a Prometheus server scrapes.

#include "show/OpenMetrics.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "MadeSnapshot.h"
#include "model/Snapshot.h"

namespace {

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The lines that begin with that, in the newer format.
std::vector<std::string> Samples(const Snapshot& snapshot, const std::string& begin) {
    std::vector<std::string> lines = Lines(Metrics(&snapshot, MetricsFormat::OpenMetrics));
    std::erase_if(lines, [&](const std::string& line) { return !line.starts_with(begin); });
    return lines;
}

using List = std::vector<std::string>;

TEST(OpenMetrics, ValuesAreInBaseUnits) {
    const Snapshot snapshot = MadeSnapshot();
    EXPECT_EQ(Samples(snapshot, "oko_temperature_celsius"), List{"oko_temperature_celsius{channel=\"H301-T\"} 37.3"});
    EXPECT_EQ(Samples(snapshot, "oko_gas_concentration_ratio"),
              List{"oko_gas_concentration_ratio{channel=\"gas:CO2\"} 0.0455"});
    EXPECT_EQ(Samples(snapshot, "oko_gas_concentration_target_ratio"),
              List{"oko_gas_concentration_target_ratio{channel=\"gas:CO2\"} 0.05"});
}

TEST(OpenMetrics, BandIsAroundTheTarget) {
    const Snapshot snapshot = MadeSnapshot();
    EXPECT_EQ(Samples(snapshot, "oko_temperature_band_lower_celsius{"),
              List{"oko_temperature_band_lower_celsius{channel=\"H301-T\"} 38"});
    EXPECT_EQ(Samples(snapshot, "oko_temperature_band_upper_celsius{"),
              List{"oko_temperature_band_upper_celsius{channel=\"H301-T\"} 38.8"});
}

TEST(OpenMetrics, ChannelWithoutAnAnswerHasNoSample) {
    Snapshot snapshot = MadeSnapshot();
    EXPECT_EQ(Samples(snapshot, "oko_relative_humidity"), List{});
    EXPECT_EQ(Samples(snapshot, "oko_temperature_celsius").size(), 1U);
    snapshot.live = false;
    EXPECT_EQ(Samples(snapshot, "oko_temperature_celsius"), List{});
    EXPECT_EQ(Samples(snapshot, "oko_live"), List{"oko_live 0"});
}

TEST(OpenMetrics, ChannelThatNeverAnsweredHasNoAge) {
    Snapshot snapshot = MadeSnapshot();
    snapshot.statuses[2].ageSeconds.reset();
    EXPECT_EQ(
        Samples(snapshot, "oko_reading_age_seconds"),
        (List{"oko_reading_age_seconds{channel=\"H301-T\"} 0.2", "oko_reading_age_seconds{channel=\"gas:CO2\"} 0.25"}));
}

TEST(OpenMetrics, StateIsOneOfItsSet) {
    EXPECT_EQ(Samples(MadeSnapshot(), "oko_channel_state{channel=\"H301-T\""),
              (List{"oko_channel_state{channel=\"H301-T\",oko_channel_state=\"none\"} 0",
                    "oko_channel_state{channel=\"H301-T\",oko_channel_state=\"below\"} 1",
                    "oko_channel_state{channel=\"H301-T\",oko_channel_state=\"ok\"} 0",
                    "oko_channel_state{channel=\"H301-T\",oko_channel_state=\"above\"} 0",
                    "oko_channel_state{channel=\"H301-T\",oko_channel_state=\"no value\"} 0",
                    "oko_channel_state{channel=\"H301-T\",oko_channel_state=\"no answer\"} 0"}));
    EXPECT_EQ(Samples(MadeSnapshot(), "oko_channel_state{channel=\"Sensor\",oko_channel_state=\"no answer\""),
              List{"oko_channel_state{channel=\"Sensor\",oko_channel_state=\"no answer\"} 1"});
}

TEST(OpenMetrics, AlarmIsInOneOfItsPhases) {
    EXPECT_EQ(Samples(MadeSnapshot(), "oko_alarm{channel=\"Sensor\""),
              (List{"oko_alarm{channel=\"Sensor\",kind=\"missing data\",oko_alarm=\"unarmed\"} 0",
                    "oko_alarm{channel=\"Sensor\",kind=\"missing data\",oko_alarm=\"watching\"} 0",
                    "oko_alarm{channel=\"Sensor\",kind=\"missing data\",oko_alarm=\"pending\"} 0",
                    "oko_alarm{channel=\"Sensor\",kind=\"missing data\",oko_alarm=\"on\"} 1"}));
}

TEST(OpenMetrics, CountersEndInTotal) {
    Snapshot snapshot = MadeSnapshot();
    snapshot.logWriteErrors = 2;
    EXPECT_EQ(Samples(snapshot, "oko_failed_reads_total{channel=\"Sensor\""),
              List{"oko_failed_reads_total{channel=\"Sensor\"} 40"});
    EXPECT_EQ(Samples(snapshot, "oko_reads_total{channel=\"H301-T\""), List{"oko_reads_total{channel=\"H301-T\"} 100"});
    EXPECT_EQ(Samples(snapshot, "oko_rows"), List{"oko_rows_total 7"});
    EXPECT_EQ(Samples(snapshot, "oko_log_write_errors"), List{"oko_log_write_errors_total 2"});
    snapshot.row = 123'456'789'012;
    EXPECT_EQ(Samples(snapshot, "oko_rows"), List{"oko_rows_total 123456789012"});
}

TEST(OpenMetrics, BucketsOfTheHistogramAddUp) {
    const List lines = Samples(MadeSnapshot(), "oko_exchange_duration_seconds");
    EXPECT_EQ(lines.front(), "oko_exchange_duration_seconds_bucket{le=\"0.0005\"} 1");
    EXPECT_EQ(lines[3], "oko_exchange_duration_seconds_bucket{le=\"0.005\"} 2");
    EXPECT_EQ(lines[7], "oko_exchange_duration_seconds_bucket{le=\"1.0\"} 2");
    EXPECT_EQ(lines[10], "oko_exchange_duration_seconds_bucket{le=\"+Inf\"} 3");
    EXPECT_EQ(lines[11], "oko_exchange_duration_seconds_count 3");
    EXPECT_EQ(lines[12], "oko_exchange_duration_seconds_sum 40.0034");
}

TEST(OpenMetrics, LabelsAreEscaped) {
    Snapshot snapshot = MadeSnapshot();
    snapshot.channels[0].key = "a\"b\\c\nd\xFF";
    EXPECT_EQ(Samples(snapshot, "oko_temperature_celsius"),
              List{"oko_temperature_celsius{channel=\"a\\\"b\\\\c\\nd\uFFFD\"} 37.3"});
}

TEST(OpenMetrics, DeviceIsAnInfoMetric) {
    Snapshot snapshot = MadeSnapshot();
    EXPECT_EQ(
        Samples(snapshot, "oko_device_info").at(0).find("oko_device_info{device=\"OKO-Lab bold line\",version=\""), 0U);
    EXPECT_TRUE(Samples(snapshot, "oko_device_info").at(0).ends_with(",simulated=\"false\",port=\"3\"} 1"));
    snapshot.device = {"OKO-Lab bold line Simulator", true, std::nullopt};
    EXPECT_TRUE(Samples(snapshot, "oko_device_info").at(0).ends_with(",simulated=\"true\"} 1"));
}

TEST(OpenMetrics, EveryFamilyIsDescribedOnceAndTheEndIsMarked) {
    const Snapshot snapshot = MadeSnapshot();
    const std::string text = Metrics(&snapshot, MetricsFormat::OpenMetrics);
    EXPECT_TRUE(text.ends_with("\n# EOF\n"));
    List types = Samples(snapshot, "# TYPE ");
    EXPECT_EQ(types.size(), Samples(snapshot, "# HELP ").size());
    std::ranges::sort(types);
    EXPECT_EQ(std::ranges::adjacent_find(types), types.end());
    EXPECT_EQ(Samples(snapshot, "# TYPE oko_reads"), List{"# TYPE oko_reads counter"});
    EXPECT_EQ(Samples(snapshot, "# TYPE oko_device"), List{"# TYPE oko_device info"});
    EXPECT_EQ(Samples(snapshot, "# TYPE oko_alarm"), List{"# TYPE oko_alarm stateset"});
    EXPECT_EQ(Samples(snapshot, "# UNIT oko_temperature_celsius"), List{"# UNIT oko_temperature_celsius celsius"});
}

TEST(OpenMetrics, OlderFormatKnowsNeitherInfoNorStateSet) {
    const Snapshot snapshot = MadeSnapshot();
    const std::string text = Metrics(&snapshot, MetricsFormat::Text);
    EXPECT_NE(text.find("# TYPE oko_device_info gauge\n"), std::string::npos);
    EXPECT_NE(text.find("# TYPE oko_channel_state gauge\n"), std::string::npos);
    EXPECT_NE(text.find("# TYPE oko_reads_total counter\n"), std::string::npos);
    EXPECT_EQ(text.find("# UNIT"), std::string::npos);
    EXPECT_EQ(text.find("# EOF"), std::string::npos);
}

TEST(OpenMetrics, BeforeTheFirstSnapshotNothingIsLive) {
    const List lines = Lines(Metrics(nullptr, MetricsFormat::OpenMetrics));
    EXPECT_NE(std::ranges::find(lines, "oko_live 0"), lines.end());
    EXPECT_EQ(lines.back(), "# EOF");
}

}  // namespace
