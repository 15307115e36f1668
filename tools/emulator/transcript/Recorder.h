#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "platform/GrowingFile.h"
#include "protocol/Answer.h"
#include "transcript/Transcript.h"

namespace emulator {

/// What a server sent for a command that came at that second.
Exchange ExchangeOf(double seconds, const std::string& command, const Transmission& sent);

/// What becomes of a record that is there already. Refuse does not mind an empty file.
enum class RecordMode { Refuse, Overwrite, Append };

/// Writes exchanges to a file, in batches: a line waits in memory until Flush, or until there are many.
class Recorder {
 public:
    /// Throws TranscriptError or FileError. `onTrouble` hears once, with a sentence, when the disk takes no more: the
    /// record then ends with the last whole line, and the run goes on.
    Recorder(std::filesystem::path file, RecordMode mode, std::function<void(const std::string& sentence)> onTrouble);
    ~Recorder();
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void Add(const Exchange& exchange);
    void Flush();

 private:
    void GiveUp(const std::string& problem);

    std::filesystem::path m_path;
    std::function<void(const std::string&)> m_onTrouble;
    std::uintmax_t m_size = 0;          // of the whole lines that the file has
    std::optional<GrowingFile> m_file;  // none: given up
    std::string m_waiting;
};

/// Whether two names lead to the same file, whether or not it is there.
bool IsSameFile(const std::filesystem::path& first, const std::filesystem::path& second);

}  // namespace emulator
