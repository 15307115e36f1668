#include "keep/CsvFormat.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"

namespace {

std::string Comment(std::string_view name, std::string_view value) {
    std::string line("# ");
    line.append(name).append(": ");
    for (const char character : value) {
        line.push_back(static_cast<unsigned char>(character) < 0x20 ? ' ' : character);
    }
    return line + "\n";
}

std::string ChannelComment(const ChannelInfo& channel) {
    std::string fields;
    AppendField(fields, channel.key);
    fields += ',';
    AppendField(fields, channel.name);
    fields +=
        std::string(",") + KindName(channel.kind) + "," + std::to_string(channel.number) + "," + UnitOf(channel.kind);
    for (const double number : {channel.min, channel.max, channel.below, channel.above}) {
        fields += ',';
        AppendNumber(fields, number);
    }
    return Comment("channel", fields + (channel.canSetTarget ? ",1" : ",0"));
}

}  // namespace

std::string FormatLogHeader(const LogHeader& header) {
    std::string interval;
    AppendNumber(interval, header.intervalSeconds);
    std::string text = std::string(kLogFirstLine) + "\n";
    text += Comment("device", header.device.name);
    text += Comment("simulated", header.device.simulated ? "yes" : "no");
    text += Comment("port", header.device.port ? std::to_string(*header.device.port) : "-");
    text += Comment("interval", interval);
    for (const ChannelInfo& channel : header.channels) {
        text += ChannelComment(channel);
    }
    return text + FormatColumns(header.channels) + "\n";
}

std::string FormatColumns(const std::vector<ChannelInfo>& channels) {
    std::string line = "time,seconds,row,subject,text";
    for (const ChannelInfo& channel : channels) {
        const std::string unit = std::string(" [") + UnitOf(channel.kind) + "]";
        for (const std::string& column :
             {" current" + unit, " target" + unit, std::string(" state"), std::string(" valid")}) {
            line += ',';
            AppendField(line, channel.key + column);
        }
    }
    return line;
}

void AppendField(std::string& line, std::string_view text) {
    const bool quoted = text.find_first_of(",\"") != std::string_view::npos;
    if (quoted) {
        line.push_back('"');
    }
    for (const char character : text) {
        if (character == '"') {
            line.push_back('"');
        }
        line.push_back(static_cast<unsigned char>(character) < 0x20 ? ' ' : character);
    }
    if (quoted) {
        line.push_back('"');
    }
}

void AppendNumber(std::string& line, double value) {
    if (!std::isfinite(value)) {
        return;
    }
    std::array<char, 32> digits{};  // the longest shortest one has 24
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    line.append(digits.data(), result.ptr);
}

std::vector<std::string> SplitFields(std::string_view line) {
    std::vector<std::string> fields(1);
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char character = line[i];
        if (character == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
            fields.back().push_back('"');
            ++i;
        } else if (character == '"') {
            quoted = !quoted;
        } else if (character == ',' && !quoted) {
            fields.emplace_back();
        } else {
            fields.back().push_back(character);
        }
    }
    return fields;
}
