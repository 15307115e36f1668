#include "keep/CsvLog.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "keep/CsvFormat.h"
#include "keep/CsvReader.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "platform/GrowingFile.h"
#include "text/Text.h"
#include "text/Time.h"

namespace {

void AppendLead(std::string& line, const Moment& when, std::string_view row) {
    std::array<char, 32> seconds{};
    const auto result =
        std::to_chars(seconds.data(), seconds.data() + seconds.size(), when.seconds, std::chars_format::fixed, 3);
    line.append(FormatUtc(when.utcMs)).push_back(',');
    line.append(seconds.data(), result.ptr).push_back(',');
    line.append(row);
}

bool SameLimits(const ChannelInfo& left, const ChannelInfo& right) {
    return left.canSetTarget == right.canSetTarget && left.min == right.min && left.max == right.max &&
           left.below == right.below && left.above == right.above;
}

/// What keeps a log from being continued; empty when nothing does.
std::string Difference(const LogHeader& log, const LogHeader& now) {
    if (log.device.name != now.device.name || log.device.simulated != now.device.simulated ||
        log.device.port != now.device.port) {
        return "it is of another device, " + log.device.name;
    }
    if (log.intervalSeconds != now.intervalSeconds) {
        return "its interval is another";
    }
    if (FormatColumns(log.channels) != FormatColumns(now.channels)) {
        return "its channels are others";
    }
    for (std::size_t i = 0; i < log.channels.size(); ++i) {
        if (!SameLimits(log.channels[i], now.channels[i])) {
            return "the limits or tolerances of " + log.channels[i].key + " were others";
        }
    }
    return "";
}

/// More of the file than any header takes.
std::string ReadBeginning(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string text(1U << 20U, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

char LastByte(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(-1, std::ios::end);
    return static_cast<char>(stream.get());
}

/// The last line of a file that does not end in a line break.
std::string LastLine(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(0, std::ios::end);
    const auto size = static_cast<std::streamoff>(stream.tellg());
    constexpr std::streamoff kMost = 1 << 20;
    stream.seekg(std::max<std::streamoff>(0, size - kMost));
    const std::string text((std::istreambuf_iterator<char>(stream)), {});
    return text.substr(text.rfind('\n') + 1);
}

bool IsRegular(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::is_regular_file(file, error);
}

bool IsThere(const std::filesystem::path& file) {
    std::error_code error;
    return std::filesystem::exists(file, error);
}

/// Checks what is at that name, and says how to open it.
GrowingFile::Mode ModeFor(const std::filesystem::path& file, const LogHeader& header, CsvLog::IfThere ifThere) {
    if (!IsThere(file)) {
        return GrowingFile::Mode::Create;
    }
    if (!IsRegular(file)) {
        return GrowingFile::Mode::Append;
    }
    if (ifThere == CsvLog::IfThere::Refuse) {
        throw CsvError(PathText(file) + " is there already: name another file, or --append to go on with it");
    }
    const std::string name = PathText(file.filename());
    if (std::filesystem::file_size(file) > 0) {
        const std::string beginning = ReadBeginning(file);
        const std::string difference = Difference(ParseLogHeader(beginning, name), header);
        if (!difference.empty()) {
            throw CsvError(PathText(file) + " cannot be continued: " + difference);
        }
    }
    return GrowingFile::Mode::Append;
}

/// What has to come before the first row: the header, or the end of a row that a killed program left.
std::string Opening(const std::filesystem::path& file, const LogHeader& header) {
    if (!IsRegular(file) || std::filesystem::file_size(file) == 0) {
        return FormatLogHeader(header);
    }
    if (LastByte(file) == '\n') {
        return "";
    }
    const bool quoted = std::ranges::count(LastLine(file), '"') % 2 != 0;
    return quoted ? "\"\n" : "\n";
}

std::vector<ChannelKind> Kinds(const std::vector<ChannelInfo>& channels) {
    std::vector<ChannelKind> kinds(channels.size());
    std::ranges::transform(channels, kinds.begin(), &ChannelInfo::kind);
    return kinds;
}

Event TroubleEvent(const Moment& when, const std::string& text) { return {0, when, EventKind::Trouble, "", text}; }

LogHeader HeaderOf(const Snapshot& snapshot) { return {snapshot.device, snapshot.intervalSeconds, snapshot.channels}; }

}  // namespace

CsvLog::CsvLog(const std::filesystem::path& file, const Snapshot& snapshot, IfThere ifThere)
    : m_kinds(Kinds(snapshot.channels)),
      m_name(PathText(file)),
      m_file(file, ModeFor(file, HeaderOf(snapshot), ifThere)) {
    const std::string opening = Opening(file, HeaderOf(snapshot));
    if (HandOver(opening) < opening.size()) {
        throw FileError("cannot write " + m_name + ": " + m_file.Problem());
    }
}

CsvLog::~CsvLog() { m_file.Write(m_rest); }

std::optional<Event> CsvLog::AddSample(const Snapshot& snapshot) {
    m_line.clear();
    AppendLead(m_line, snapshot.when, kSampleRow);
    m_line += ",,";
    for (std::size_t i = 0; i < m_kinds.size(); ++i) {
        const Reading& reading = snapshot.statuses[i].reading;
        const bool valid = reading.current && std::isfinite(*reading.current);
        m_line += ',';
        AppendNumber(m_line, reading.current.value_or(NAN));
        m_line += ',';
        AppendNumber(m_line, reading.target.value_or(NAN));
        m_line += ',';
        m_line += StateName(m_kinds[i], reading.state);
        m_line += valid ? ",1" : ",0";
    }
    m_line += '\n';
    return Put(snapshot.when);
}

std::optional<Event> CsvLog::AddEvent(const Event& event) {
    m_line = EventLine(event);
    return Put(event.when);
}

/// Writes m_line, and before it how many rows are missing, if any are.
std::optional<Event> CsvLog::Put(const Moment& when) {
    const Event back = BackEvent(when);
    const std::string rows = m_bFailing ? EventLine(back) + m_line : m_line;
    const std::size_t taken = HandOver(rows);
    if (taken == rows.size()) {
        return std::exchange(m_bFailing, false) ? std::optional(back) : std::nullopt;
    }
    const bool begins = !std::exchange(m_bFailing, true);
    if (begins) {
        m_nLostBefore = m_nLost;
    }
    if (taken == 0) {
        CountLost(when);
    }
    if (!begins) {
        return std::nullopt;
    }
    return TroubleEvent(when, "cannot write " + m_name + ": " + m_file.Problem() + "; each row is tried again");
}

/// Returns how much of the text the system took. What it did not take of a row comes before the next one.
std::size_t CsvLog::HandOver(const std::string& text) {
    m_rest.erase(0, m_file.Write(m_rest));
    if (!m_rest.empty()) {
        return 0;
    }
    const std::size_t taken = m_file.Write(text);
    if (taken > 0) {
        m_rest = text.substr(taken);
    }
    return taken;
}

void CsvLog::CountLost(const Moment& when) {
    if (m_nLost == m_nLostBefore) {
        m_firstLost = when;
    }
    m_lastLost = when;
    ++m_nLost;
}

Event CsvLog::BackEvent(const Moment& when) const {
    const std::uint64_t lost = m_nLost - m_nLostBefore;
    std::string text = "can write " + m_name + " again; ";
    if (lost == 0) {
        text += "no row is missing";
    } else {
        text += std::to_string(lost) + (lost == 1 ? " row is" : " rows are") + " missing, from " +
                FormatUtc(m_firstLost.utcMs) + " to " + FormatUtc(m_lastLost.utcMs);
    }
    return TroubleEvent(when, text);
}

std::string CsvLog::EventLine(const Event& event) const {
    std::string line;
    AppendLead(line, event.when, EventKindName(event.kind));
    line += ',';
    AppendField(line, event.channel);
    line += ',';
    AppendField(line, event.text);
    return line.append(m_kinds.size() * kColumnsPerChannel, ',') + "\n";
}
