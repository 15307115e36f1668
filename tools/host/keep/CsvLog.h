#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Moment.h"
#include "model/Snapshot.h"
#include "platform/GrowingFile.h"

/// Writes a log, row by row: a killed program loses at most the row that it was writing.
///
/// When a row cannot be written, the watch goes on: each later row is tried again, and once one can be written, an
/// event before it says how many are missing.
class CsvLog {
 public:
    enum class IfThere { Refuse, Append };

    /// Begins a log of the snapshot's device, or goes on with one of the same device, channels and interval. Throws
    /// CsvError and FileError; what is in the file stays as it is then. A pipe or a device file is never refused.
    CsvLog(const std::filesystem::path& file, const Snapshot& snapshot, IfThere ifThere);
    ~CsvLog();
    CsvLog(const CsvLog&) = delete;
    CsvLog& operator=(const CsvLog&) = delete;

    /// Each gives the event to tell when rows began to be lost or can be written again. The log itself has it where it
    /// can: it is not to be added.
    std::optional<Event> AddSample(const Snapshot& snapshot);
    std::optional<Event> AddEvent(const Event& event);

    /// How many rows could not be written since the log was opened.
    std::uint64_t LostRows() const noexcept { return m_nLost; }

 private:
    std::optional<Event> Put(const Moment& when);
    std::size_t HandOver(const std::string& text);
    void CountLost(const Moment& when);
    Event BackEvent(const Moment& when) const;
    std::string EventLine(const Event& event) const;

    std::vector<ChannelKind> m_kinds;
    std::string m_name;  // the file's, for people
    GrowingFile m_file;
    std::string m_line;  // the row that is being made
    std::string m_rest;  // of a row whose beginning the system took
    bool m_bFailing = false;
    std::uint64_t m_nLost = 0;
    std::uint64_t m_nLostBefore = 0;  // when writing began to fail
    Moment m_firstLost;               // since then
    Moment m_lastLost;
};
