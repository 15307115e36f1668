#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Snapshot.h"

/// The one format of logs: a file that spreadsheets and programs read as it is. Comments say what is logged, a row
/// names the columns, and then comes a row for each round of reads and for each event.

/// What the comments of a log say.
struct LogHeader {
    DeviceInfo device;
    double intervalSeconds = 1.0;
    std::vector<ChannelInfo> channels;
};

/// A file is no log, or not the one that is wanted; the text is for the user.
class CsvError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

constexpr std::string_view kLogFirstLine = "# oko-host log 1";
constexpr std::string_view kSampleRow = "sample";  // in the column "row"; else it is an event's kind
constexpr std::size_t kLeadingColumns = 5;         // time, seconds, row, subject, text
constexpr std::size_t kColumnsPerChannel = 4;      // current, target, state, valid

/// The comments and the row of the columns' names, with a line break at the end of each.
std::string FormatLogHeader(const LogHeader& header);

/// Just the row of the columns' names, without a line break.
std::string FormatColumns(const std::vector<ChannelInfo>& channels);

/// Appends a text as one field: quoted where it must be, and with blanks for line breaks and the like, so that every
/// row is one line.
void AppendField(std::string& line, std::string_view text);

/// Appends the shortest number that reads as the same; nothing for one that is not finite.
void AppendNumber(std::string& line, double value);

/// The fields of a line; a field whose quotes do not end goes to the end of the line.
std::vector<std::string> SplitFields(std::string_view line);
