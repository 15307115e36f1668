#include "keep/CsvReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <ios>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "keep/CsvFormat.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "platform/GrowingFile.h"
#include "text/Number.h"
#include "text/Text.h"
#include "text/Time.h"

namespace {

constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

/// The lines of a text, one after the other.
class Lines {
 public:
    Lines(std::string_view text, std::string_view name) : m_text(text), m_name(name) {}

    bool AtEnd() const { return m_text.empty(); }
    std::size_t Number() const { return m_nLine; }

    std::string_view Next() {
        const std::size_t end = std::min(m_text.find('\n'), m_text.size());
        std::string_view line = m_text.substr(0, end);
        m_text.remove_prefix(std::min(end + 1, m_text.size()));
        ++m_nLine;
        if (line.ends_with('\r')) {
            line.remove_suffix(1);  // an editor's
        }
        return line;
    }

    /// Of the line that Next gave last.
    CsvError Error(const std::string& what) const {
        return CsvError(std::string(m_name) + ", line " + std::to_string(m_nLine) + ": " + what);
    }

 private:
    std::string_view m_text;
    std::string_view m_name;
    std::size_t m_nLine = 0;
};

/// Nothing unless all of the text is one finite number.
std::optional<double> ParseNumber(std::string_view text) {
    const auto value = ReadExactly<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<ChannelKind> ParseKind(std::string_view name) {
    for (const ChannelKind kind : {ChannelKind::Temperature, ChannelKind::Gas, ChannelKind::Humidity}) {
        if (name == KindName(kind)) {
            return kind;
        }
    }
    return std::nullopt;
}

std::optional<EventKind> ParseEventKind(std::string_view name) {
    for (int i = 0; i <= static_cast<int>(EventKind::Trouble); ++i) {
        if (name == EventKindName(static_cast<EventKind>(i))) {
            return static_cast<EventKind>(i);
        }
    }
    return std::nullopt;
}

ChannelInfo ParseChannel(std::string_view value, const Lines& lines) {
    const std::vector<std::string> fields = SplitFields(value);
    if (fields.size() != 10) {
        throw lines.Error("a channel has ten fields");
    }
    ChannelInfo channel;
    const auto kind = ParseKind(fields[2]);
    const auto number = ReadExactly<int>(fields[3]);
    if (!kind || !number || (fields[9] != "0" && fields[9] != "1")) {
        throw lines.Error("this is no channel");
    }
    channel.key = fields[0];
    channel.name = fields[1];
    channel.kind = *kind;
    channel.number = *number;
    channel.canSetTarget = fields[9] == "1";
    std::size_t field = 5;
    for (double* const limit : {&channel.min, &channel.max, &channel.below, &channel.above}) {
        const auto parsed = ParseNumber(fields[field]);
        if (!parsed) {
            throw lines.Error("\"" + fields[field] + "\" is no number");
        }
        *limit = *parsed;
        ++field;
    }
    return channel;
}

void TakeComment(std::string_view line, const Lines& lines, LogHeader& header) {
    const std::size_t colon = line.find(": ");
    if (colon == std::string_view::npos || colon < 2) {
        return;  // somebody's note
    }
    const std::string_view name = line.substr(2, colon - 2);
    const std::string_view value = line.substr(colon + 2);
    if (name == "device") {
        header.device.name = value;
    } else if (name == "simulated") {
        header.device.simulated = value == "yes";
    } else if (name == "port") {
        header.device.port = ReadExactly<int>(value);
    } else if (name == "interval") {
        const auto interval = ParseNumber(value);
        if (!interval || *interval <= 0.0) {
            throw lines.Error("this is no interval");
        }
        header.intervalSeconds = *interval;
    } else if (name == "channel") {
        header.channels.push_back(ParseChannel(value, lines));
    }
}

LogHeader TakeHeader(Lines& lines) {
    LogHeader header;
    if (lines.Next() != kLogFirstLine) {
        throw lines.Error("this is no log of oko-host");
    }
    while (!lines.AtEnd()) {
        const std::string_view line = lines.Next();
        if (line.starts_with('#')) {
            TakeComment(line, lines, header);
        } else if (line == FormatColumns(header.channels)) {
            return header;
        } else {
            throw lines.Error("these are not the columns of the channels above");
        }
    }
    throw lines.Error("the log ends before its first row");
}

/// Walks over the fields of a line that are not quoted.
class Fields {
 public:
    explicit Fields(std::string_view line) : m_at(line.data()), m_end(line.data() + line.size()) {}

    /// Nothing after the last field.
    std::optional<std::string_view> Next() {
        if (m_at == nullptr) {
            return std::nullopt;
        }
        const char* const begin = m_at;
        while (m_at != m_end && *m_at != ',') {
            ++m_at;
        }
        const std::string_view field(begin, static_cast<std::size_t>(m_at - begin));
        m_at = m_at == m_end ? nullptr : m_at + 1;
        return field;
    }

    bool AtEnd() const { return m_at == nullptr; }

 private:
    const char* m_at;
    const char* m_end;
};

struct Sample {
    double current;
    double target;
    ChannelState state;
};

std::optional<double> ParseValue(const std::optional<std::string_view>& field) {
    if (!field) {
        return std::nullopt;
    }
    return field->empty() ? std::optional(kNoValue) : ParseNumber(*field);
}

/// States are few, and each row has them again.
std::optional<ChannelState> ParseState(ChannelKind kind, const std::optional<std::string_view>& field) {
    constexpr std::array kStates{ChannelState::Within, ChannelState::None,    ChannelState::Below,
                                 ChannelState::Above,  ChannelState::NoValue, ChannelState::NoAnswer};
    for (const ChannelState state : kStates) {
        if (field && *field == StateName(kind, state)) {
            return state;
        }
    }
    return std::nullopt;
}

std::optional<Sample> ParseSample(ChannelKind kind, Fields& fields) {
    const auto current = ParseValue(fields.Next());
    const auto target = ParseValue(fields.Next());
    const auto state = ParseState(kind, fields.Next());
    const auto valid = fields.Next();
    if (!current || !target || !state || !valid || (*valid != "0" && *valid != "1")) {
        return std::nullopt;
    }
    return Sample{*valid == "1" ? *current : kNoValue, *target, *state};
}

/// Takes a row of samples; false, and the log as it was, when the line is none.
bool TakeSamples(std::string_view line, Log& log, std::vector<Sample>& samples) {
    Fields fields(line);
    const auto time = fields.Next();
    const auto utcMs = ParseUtc(time.value_or(""));
    const auto seconds = ParseValue(fields.Next());
    if (!utcMs || !seconds || fields.Next() != kSampleRow || fields.Next() != "" || fields.Next() != "") {
        return false;
    }
    samples.clear();
    for (const ChannelInfo& channel : log.header.channels) {
        const auto sample = ParseSample(channel.kind, fields);
        if (!sample) {
            return false;
        }
        samples.push_back(*sample);
    }
    if (!fields.AtEnd()) {
        return false;
    }
    log.timeMs.push_back(*utcMs);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        log.columns[i].current.push_back(samples[i].current);
        log.columns[i].target.push_back(samples[i].target);
        log.columns[i].state.push_back(samples[i].state);
    }
    return true;
}

/// Any other row: an event, or what a killed program left of a row, or no row of a log at all.
void TakeOther(std::string_view line, const Lines& lines, Log& log) {
    const std::vector<std::string> fields = SplitFields(line);
    const std::size_t columns = kLeadingColumns + log.header.channels.size() * kColumnsPerChannel;
    const bool sample = fields.size() > 2 && fields[2] == kSampleRow;
    if (fields.size() < columns || (sample && fields.size() == columns && fields.back().empty())) {
        log.torn.push_back(lines.Number());
        return;
    }
    if (fields.size() > columns) {
        throw lines.Error("there are more fields than columns");
    }
    const auto utcMs = ParseUtc(fields[0]);
    if (!utcMs) {
        throw lines.Error("\"" + fields[0] + "\" is no time as 2026-11-21T21:40:00.123Z");
    }
    const auto seconds = ParseNumber(fields[1]);
    if (!seconds) {
        throw lines.Error("\"" + fields[1] + "\" is no number of seconds");
    }
    if (sample) {
        throw lines.Error("a channel's values cannot be read");
    }
    const auto kind = ParseEventKind(fields[2]);
    if (!kind) {
        throw lines.Error("\"" + fields[2] + "\" is no kind of row");
    }
    log.events.push_back({log.events.size() + 1, {*utcMs, *seconds}, *kind, fields[3], fields[4]});
}

std::string ReadFile(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text;
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    if (!error) {
        text.resize(static_cast<std::size_t>(size));
    }
    if (!stream || error || (!text.empty() && !stream.read(text.data(), static_cast<std::streamsize>(text.size())))) {
        throw FileError("cannot read " + PathText(file) + (error ? ": " + error.message() : ""));
    }
    return text;
}

}  // namespace

Log ReadCsv(const std::filesystem::path& file) { return ParseCsv(ReadFile(file), PathText(file.filename())); }

Log ParseCsv(std::string_view text, std::string_view name) {
    Lines lines(text, name);
    Log log;
    log.header = TakeHeader(lines);
    log.columns.resize(log.header.channels.size());
    std::vector<Sample> samples;
    while (!lines.AtEnd()) {
        const std::string_view line = lines.Next();
        if (!line.empty() && !TakeSamples(line, log, samples)) {
            TakeOther(line, lines, log);
        }
    }
    return log;
}

LogHeader ParseLogHeader(std::string_view text, std::string_view name) {
    Lines lines(text, name);
    return TakeHeader(lines);
}
