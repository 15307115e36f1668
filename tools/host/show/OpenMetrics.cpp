#include "show/OpenMetrics.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OkoVersion.h"
#include "model/ChannelInfo.h"
#include "model/DurationHistogram.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "text/Json.h"

namespace {

using Labels = std::vector<std::pair<const char*, std::string>>;

/// A backslash, a quote and a line feed are what can end a label early; what is not UTF-8 would have the whole reply
/// refused.
std::string Escape(const std::string& text) {
    std::string escaped;
    for (const char c : nlohmann::json::parse(JsonQuoted(text)).get<std::string>()) {
        if (c == '\n') {
            escaped += "\\n";
            continue;
        }
        if (c == '\\' || c == '"') {
            escaped += '\\';
        }
        escaped += c;
    }
    return escaped;
}

/// Writes families of metrics and their samples; the two formats differ in the names of what the older one lacks.
class Writer {
 public:
    explicit Writer(MetricsFormat format) : m_isOpen(format == MetricsFormat::OpenMetrics) {}

    void Gauge(std::string_view name, std::string_view unit, std::string_view help) {
        Family(name, "", "gauge", "gauge", unit, help);
    }
    void Counter(std::string_view name, std::string_view help) {
        Family(name, "_total", "counter", "counter", "", help);
    }
    void Histogram(std::string_view name, std::string_view unit, std::string_view help) {
        Family(name, "", "histogram", "histogram", unit, help);
    }
    void Info(std::string_view name, std::string_view help) { Family(name, "_info", "info", "gauge", "", help); }
    void StateSet(std::string_view name, std::string_view help) { Family(name, "", "stateset", "gauge", "", help); }

    void Sample(std::string_view suffix, const Labels& labels, double value) {
        ((m_text += m_name) += suffix) += labels.empty() ? "" : "{";
        for (std::size_t i = 0; i < labels.size(); ++i) {
            ((m_text += i == 0 ? "" : ",") += labels[i].first) += "=\"";
            (m_text += Escape(labels[i].second)) += '"';
        }
        m_text += labels.empty() ? " " : "} ";
        AppendJson(m_text, value);
        m_text += '\n';
    }
    void Sample(std::string_view suffix, const Labels& labels, std::uint64_t value) {
        Sample(suffix, labels, static_cast<double>(value));
    }

    std::string Finish() && { return std::move(m_isOpen ? m_text += "# EOF\n" : m_text); }

 private:
    void Family(std::string_view name, std::string_view suffix, std::string_view type, std::string_view olderType,
                std::string_view unit, std::string_view help) {
        m_name = name;
        m_name += unit.empty() ? "" : "_";
        m_name += unit;
        const std::string family = m_isOpen ? m_name : m_name + std::string(suffix);
        ((((m_text += "# TYPE ") += family) += ' ') += m_isOpen ? type : olderType) += '\n';
        if (m_isOpen && !unit.empty()) {
            ((((m_text += "# UNIT ") += family) += ' ') += unit) += '\n';
        }
        ((((m_text += "# HELP ") += family) += ' ') += help) += '\n';
    }

    bool m_isOpen;
    std::string m_name;
    std::string m_text;
};

/// A kind of channel as a metric.
struct Quantity {
    ChannelKind kind;
    const char* name;
    const char* unit;
    const char* words;
    double divisor;  // from the unit of the page to the metric's
};
constexpr std::array kQuantities{
    Quantity{ChannelKind::Temperature, "oko_temperature", "celsius", "temperature", 1.0},
    Quantity{ChannelKind::Gas, "oko_gas_concentration", "ratio", "concentration of the gas", 100.0},
    Quantity{ChannelKind::Humidity, "oko_relative_humidity", "ratio", "relative humidity", 100.0},
};

/// One number that a channel has, or has not just now.
struct Aspect {
    const char* suffix;
    const char* words;
    std::optional<double> (*valueOf)(const ChannelInfo& channel, const Reading& reading);
};
constexpr std::array kAspects{
    Aspect{"", "The ", [](const ChannelInfo&, const Reading& reading) { return reading.current; }},
    Aspect{"_target", "The target of the ", [](const ChannelInfo&, const Reading& reading) { return reading.target; }},
    Aspect{"_band_lower", "From where on the target counts as reached: the lower limit of the ",
           [](const ChannelInfo& channel, const Reading& reading) {
               return reading.target ? std::optional(*reading.target - channel.below) : std::nullopt;
           }},
    Aspect{"_band_upper", "Up to where the target counts as reached: the upper limit of the ",
           [](const ChannelInfo& channel, const Reading& reading) {
               return reading.target ? std::optional(*reading.target + channel.above) : std::nullopt;
           }},
};

void WriteValues(Writer& writer, const Snapshot& snapshot, const Quantity& quantity, const Aspect& aspect) {
    bool isTold = false;
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        const ChannelInfo& channel = snapshot.channels[i];
        const auto value = aspect.valueOf(channel, snapshot.statuses[i].reading);
        if (channel.kind != quantity.kind || !value) {
            continue;
        }
        if (!std::exchange(isTold, true)) {
            writer.Gauge(std::string(quantity.name) + aspect.suffix, quantity.unit,
                         std::string(aspect.words) + quantity.words + ".");
        }
        writer.Sample("", {{"channel", channel.key}}, *value / quantity.divisor);
    }
}

void WriteStates(Writer& writer, const Snapshot& snapshot) {
    constexpr std::array kStates{"none", "below", "ok", "above", "no value", "no answer"};
    writer.StateSet("oko_channel_state", "Where the value lies: 1 for what holds.");
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        for (std::size_t state = 0; state < kStates.size(); ++state) {
            const bool holds = static_cast<std::size_t>(snapshot.statuses[i].reading.state) == state;
            writer.Sample("", {{"channel", snapshot.channels[i].key}, {"oko_channel_state", kStates[state]}},
                          holds ? 1.0 : 0.0);
        }
    }
}

void WriteReads(Writer& writer, const Snapshot& snapshot) {
    writer.Gauge("oko_reading_age", "seconds", "How long ago the channel's last value came.");
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        if (const auto& age = snapshot.statuses[i].ageSeconds) {
            writer.Sample("", {{"channel", snapshot.channels[i].key}}, *age);
        }
    }
    writer.Counter("oko_reads", "How often the channel was read.");
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        writer.Sample("_total", {{"channel", snapshot.channels[i].key}}, snapshot.statuses[i].reads);
    }
    writer.Counter("oko_failed_reads", "How many reads of the channel brought no value.");
    for (std::size_t i = 0; i < snapshot.channels.size(); ++i) {
        writer.Sample("_total", {{"channel", snapshot.channels[i].key}}, snapshot.statuses[i].failedReads);
    }
}

void WriteAlarms(Writer& writer, const Snapshot& snapshot) {
    constexpr std::array kPhases{"unarmed", "watching", "pending", "on"};
    writer.StateSet("oko_alarm", "How far an alarm has come: 1 for what holds.");
    for (const AlarmStatus& alarm : snapshot.alarms) {
        for (std::size_t phase = 0; phase < kPhases.size(); ++phase) {
            writer.Sample("",
                          {{"channel", snapshot.channels[alarm.channel].key},
                           {"kind", alarm.kind == AlarmKind::OutOfBand ? "out of band" : "missing data"},
                           {"oko_alarm", kPhases[phase]}},
                          static_cast<std::size_t>(alarm.phase) == phase ? 1.0 : 0.0);
        }
    }
}

/// The format asks for a point in each bound, and knows it by its text.
std::string BoundText(double bound) {
    std::array<char, 32> digits{};
    const char* const end =
        std::to_chars(digits.data(), digits.data() + digits.size(), bound, std::chars_format::fixed).ptr;
    const std::string text(static_cast<const char*>(digits.data()), end);
    return text.find('.') == std::string::npos ? text + ".0" : text;
}

void WriteExchanges(Writer& writer, const DurationHistogram& exchanges) {
    writer.Histogram("oko_exchange_duration", "seconds", "How long calls that read from the device took.");
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < exchanges.counts.size(); ++i) {
        count += exchanges.counts[i];
        const bool isLast = i == DurationHistogram::kBounds.size();
        writer.Sample("_bucket", {{"le", isLast ? "+Inf" : BoundText(DurationHistogram::kBounds[i])}}, count);
    }
    writer.Sample("_count", {}, count);
    writer.Sample("_sum", {}, exchanges.sumSeconds);
}

void WriteDevice(Writer& writer, const Snapshot& snapshot) {
    writer.Info("oko_device", "The device that is watched, and the version of the program that watches it.");
    Labels labels{{"device", snapshot.device.name},
                  {"version", kOkoVersion},
                  {"simulated", snapshot.device.simulated ? "true" : "false"}};
    if (snapshot.device.port) {
        labels.emplace_back("port", std::to_string(*snapshot.device.port));
    }
    writer.Sample("_info", labels, 1.0);
    writer.Gauge("oko_live", "", "Whether values are coming: 1 or 0.");
    writer.Sample("", {}, snapshot.live ? 1.0 : 0.0);
}

}  // namespace

const char* MetricsContentType(MetricsFormat format) {
    return format == MetricsFormat::OpenMetrics ? "application/openmetrics-text; version=1.0.0; charset=utf-8"
                                                : "text/plain; version=0.0.4; charset=utf-8";
}

std::string Metrics(const Snapshot* snapshot, MetricsFormat format) {
    Writer writer(format);
    WriteDevice(writer, snapshot != nullptr ? *snapshot : Snapshot{});
    if (snapshot == nullptr) {
        return std::move(writer).Finish();
    }
    for (const Quantity& quantity : kQuantities) {
        for (const Aspect& aspect : kAspects) {
            if (snapshot->live) {
                WriteValues(writer, *snapshot, quantity, aspect);
            }
        }
    }
    WriteStates(writer, *snapshot);
    WriteReads(writer, *snapshot);
    WriteAlarms(writer, *snapshot);
    writer.Gauge("oko_interval", "seconds", "From one row of values to the next.");
    writer.Sample("", {}, snapshot->intervalSeconds);
    writer.Gauge("oko_snapshot_timestamp", "seconds", "When all this was told, in seconds since 1970.");
    writer.Sample("", {}, static_cast<double>(snapshot->when.utcMs) / 1000.0);
    writer.Counter("oko_rows", "Rows of values that were kept.");
    writer.Sample("_total", {}, snapshot->row);
    writer.Counter("oko_log_write_errors", "Rows and events that the log's file did not take.");
    writer.Sample("_total", {}, snapshot->logWriteErrors);
    WriteExchanges(writer, snapshot->exchanges);
    return std::move(writer).Finish();
}
