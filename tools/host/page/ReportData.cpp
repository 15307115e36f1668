#include "page/ReportData.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "OkoVersion.h"
#include "judge/Statistics.h"
#include "keep/CsvReader.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "text/Json.h"
#include "text/Time.h"

namespace {

constexpr int kMostExact = 6;
constexpr std::array<double, kMostExact + 1> kPowers{1.0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};

double PowerOf(int decimals) { return kPowers[static_cast<std::size_t>(decimals)]; }

/// Twice the difference of two of these is still a number that the page's script counts exactly.
constexpr double kLargestScaled = 2e15;

std::int64_t Scaled(double value, int decimals) {
    return std::llround(std::clamp(value * PowerOf(decimals), -kLargestScaled, kLargestScaled));
}

bool IsExact(double value, int decimals) {
    return static_cast<double>(Scaled(value, decimals)) / PowerOf(decimals) == value;
}

/// Writes codes, and runs of one code as a count.
class RunWriter {
 public:
    explicit RunWriter(std::string& bytes) : m_bytes(bytes) {}

    void Add(std::uint64_t code) {
        if (m_last == code) {
            ++m_nAgain;
            return;
        }
        End();
        AddNumber(code);
        m_last = code;
    }

    void End() {
        if (m_nAgain > 0) {
            AddNumber(1);
            AddNumber(m_nAgain);
        }
        m_nAgain = 0;
    }

 private:
    void AddNumber(std::uint64_t number) {
        for (; number >= 128; number >>= 7U) {
            m_bytes.push_back(static_cast<char>(number | 128U));
        }
        m_bytes.push_back(static_cast<char>(number));
    }

    std::string& m_bytes;
    std::uint64_t m_last = UINT64_MAX;  // none yet
    std::uint64_t m_nAgain = 0;
};

template <class T>
void Reorder(std::vector<T>& values, const std::vector<std::size_t>& order) {
    std::vector<T> sorted;
    sorted.reserve(values.size());
    for (const std::size_t row : order) {
        sorted.push_back(values[row]);
    }
    values = std::move(sorted);
}

/// What the summary says. Rows that are missing are not judged: no more than a few intervals count between two rows.
Statistics Summarise(const Log& log) {
    constexpr double kMostIntervals = 3.0;
    Statistics statistics(log.header.channels);
    Moment now;
    std::vector<Reading> readings(log.columns.size());
    for (std::size_t row = 0; row < log.timeMs.size(); ++row) {
        if (row > 0) {
            const double elapsed = static_cast<double>(log.timeMs[row] - log.timeMs[row - 1]) / 1000.0;
            now.seconds += std::min(elapsed, kMostIntervals * log.header.intervalSeconds);
        }
        now.utcMs = log.timeMs[row];
        for (std::size_t i = 0; i < readings.size(); ++i) {
            const auto valueOrNone = [](double value) {
                return std::isnan(value) ? std::nullopt : std::optional(value);
            };
            readings[i] = {valueOrNone(log.columns[i].current[row]), valueOrNone(log.columns[i].target[row]),
                           log.columns[i].state[row], false};
        }
        statistics.Update(readings, now);
    }
    return statistics;
}

/// Writes the members of an object, one after the other.
class Members {
 public:
    explicit Members(std::string& json) : m_json(json) { m_json += '{'; }

    void Raw(std::string_view name, std::string_view value) {
        m_json += m_bFirst ? "\"" : ",\"";
        m_bFirst = false;
        m_json.append(name).append("\":").append(value);
    }
    void Text(std::string_view name, std::string_view text) { Raw(name, JsonQuoted(text)); }
    void Number(std::string_view name, std::optional<double> number) {
        std::string text;
        AppendJson(text, number.value_or(NAN));
        Raw(name, text);
    }
    void Flag(std::string_view name, bool flag) { Raw(name, flag ? "true" : "false"); }
    void Count(std::string_view name, std::uint64_t count) { Raw(name, std::to_string(count)); }
    void End() { m_json += '}'; }

 private:
    std::string& m_json;
    bool m_bFirst = true;
};

std::string ChannelHead(const ChannelInfo& channel, const ChannelStatistics& statistics, int decimals) {
    std::string json;
    Members members(json);
    const auto ifAny = [&](double value) { return statistics.Values() == 0 ? std::nullopt : std::optional(value); };
    members.Text("key", channel.key);
    members.Text("name", channel.name);
    members.Text("kind", KindName(channel.kind));
    members.Text("unit", UnitOf(channel.kind));
    members.Flag("canSet", channel.canSetTarget);
    members.Number("below", channel.below);
    members.Number("above", channel.above);
    members.Raw("decimals", std::to_string(decimals));
    members.Number("least", ifAny(statistics.min));
    members.Number("mean", ifAny(statistics.mean));
    members.Number("greatest", ifAny(statistics.max));
    members.Number("inBand", statistics.ShareInBand());
    members.Count("reads", statistics.reads);
    members.Count("failedReads", statistics.failedReads);
    members.End();
    return json;
}

std::string EventHead(const Event& event) {
    std::string json;
    Members members(json);
    members.Count("id", event.id);
    members.Text("time", FormatUtc(event.when.utcMs));
    members.Raw("timeMs", std::to_string(event.when.utcMs));
    members.Text("kind", EventKindName(event.kind));
    members.Text("channel", event.channel);
    members.Text("text", event.text);
    members.End();
    return json;
}

template <class Range, class Write>
std::string Array(const Range& range, Write write) {
    std::string json = "[";
    for (std::size_t i = 0; i < range.size(); ++i) {
        json += i == 0 ? "" : ",";
        json += write(i);
    }
    return json + "]";
}

}  // namespace

void AppendColumn(std::string& bytes, std::span<const double> values, int decimals) {
    RunWriter codes(bytes);
    std::int64_t last = 0;
    for (const double value : values) {
        if (std::isnan(value)) {
            codes.Add(0);
            continue;
        }
        const std::int64_t scaled = Scaled(value, decimals);
        const std::int64_t difference = scaled - last;
        last = scaled;
        codes.Add(2 + static_cast<std::uint64_t>(difference < 0 ? -2 * difference - 1 : 2 * difference));
    }
    codes.End();
}

int DecimalsOf(std::span<const double> first, std::span<const double> second) {
    int decimals = 0;
    for (const std::span<const double> values : {first, second}) {
        for (const double value : values) {
            while (decimals < kMostExact && !std::isnan(value) && !IsExact(value, decimals)) {
                ++decimals;
            }
        }
    }
    return decimals;
}

Log SortedByTime(Log log) {
    if (std::ranges::is_sorted(log.timeMs)) {
        return log;
    }
    std::vector<std::size_t> order(log.timeMs.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t row) { return log.timeMs[row]; });
    Reorder(log.timeMs, order);
    for (LogColumns& columns : log.columns) {
        Reorder(columns.current, order);
        Reorder(columns.target, order);
        Reorder(columns.state, order);
    }
    return log;
}

std::string ReportHead(const Log& log, std::string_view name, std::span<const int> decimals) {
    const Statistics statistics = Summarise(log);
    std::string json;
    Members members(json);
    members.Text("version", kOkoVersion);
    members.Text("file", name);
    members.Text("device", log.header.device.name);
    members.Flag("simulated", log.header.device.simulated);
    members.Raw("port", log.header.device.port ? std::to_string(*log.header.device.port) : "null");
    members.Number("interval", log.header.intervalSeconds);
    members.Count("rows", log.timeMs.size());
    members.Raw("firstMs", std::to_string(log.timeMs.empty() ? 0 : log.timeMs.front()));
    members.Raw("lastMs", std::to_string(log.timeMs.empty() ? 0 : log.timeMs.back()));
    members.Count("torn", log.torn.size());
    members.Raw("channels", Array(log.header.channels, [&](std::size_t i) {
                    return ChannelHead(log.header.channels[i], statistics.Channels()[i], decimals[i]);
                }));
    members.Raw("events", Array(log.events, [&](std::size_t i) { return EventHead(log.events[i]); }));
    members.End();
    return json;
}

std::string ReportValues(const Log& log, std::span<const int> decimals) {
    std::string bytes;
    AppendColumn(bytes, std::vector<double>(log.timeMs.begin(), log.timeMs.end()), 0);
    for (std::size_t i = 0; i < log.columns.size(); ++i) {
        AppendColumn(bytes, log.columns[i].current, decimals[i]);
        AppendColumn(bytes, log.columns[i].target, decimals[i]);
    }
    return Base64(bytes);
}

std::string Base64(std::string_view bytes) {
    constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j < i + 3; ++j) {
            group = (group << 8U) | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0U);
        }
        const std::size_t digits = std::min<std::size_t>(bytes.size() - i, 3) + 1;
        for (std::size_t digit = 0; digit < 4; ++digit) {
            text += digit < digits ? kDigits[(group >> (18U - 6U * digit)) & 63U] : '=';
        }
    }
    return text;
}
