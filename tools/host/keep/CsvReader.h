#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <vector>

#include "keep/CsvFormat.h"
#include "model/Event.h"
#include "model/Reading.h"

/// A channel's values, one for each row of samples. NaN: no value.
struct LogColumns {
    std::vector<double> current;
    std::vector<double> target;
    std::vector<ChannelState> state;
};

/// A log in memory.
struct Log {
    LogHeader header;
    std::vector<std::int64_t> timeMs;  // of the rows of samples
    std::vector<LogColumns> columns;   // one for each channel
    std::vector<Event> events;         // numbered from 1
    std::vector<std::size_t> torn;     // numbers of lines that a killed program left unfinished; they are left out
};

/// Reads a whole log. Throws CsvError, which names the line, and FileError (platform/GrowingFile.h).
Log ReadCsv(const std::filesystem::path& file);

/// The same for a text; `name` stands in errors.
Log ParseCsv(std::string_view text, std::string_view name);

/// Of a text that begins as a log does, what comes before the rows.
LogHeader ParseLogHeader(std::string_view text, std::string_view name);
