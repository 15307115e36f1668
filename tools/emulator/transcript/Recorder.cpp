#include "transcript/Recorder.h"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <string>
#include <system_error>
#include <utility>

#include "platform/GrowingFile.h"
#include "protocol/Answer.h"
#include "text/Text.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

constexpr std::size_t kMostWaiting = 1U << 20U;  // bytes

/// A line that a crash cut must not become one with the next.
bool EndsWithinLine(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    char last = '\n';
    if (file && file.tellg() > 0) {
        file.seekg(-1, std::ios::end);
        file.get(last);
    }
    return last != '\n';
}

/// Makes the file such as the mode wants it, and says how it is opened.
GrowingFile::Mode PrepareFile(const std::filesystem::path& path, RecordMode mode) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) {
        return GrowingFile::Mode::Create;
    }
    if (std::filesystem::is_regular_file(path, ignored) && std::filesystem::file_size(path) > 0) {
        if (mode == RecordMode::Refuse) {
            throw TranscriptError(PathText(path) +
                                  " has a record already; --overwrite replaces it, --append goes on behind it");
        }
        if (mode == RecordMode::Overwrite) {
            std::filesystem::resize_file(path, 0);
        }
    }
    return GrowingFile::Mode::Append;
}

}  // namespace

Exchange ExchangeOf(double seconds, const std::string& command, const Transmission& sent) {
    Exchange exchange{seconds, command, {}, 0};
    for (const Datagram& datagram : sent) {
        exchange.replies.push_back({datagram.bytes, datagram.delayMs / 1000.0});
    }
    return exchange;
}

Recorder::Recorder(std::filesystem::path file, RecordMode mode,
                   std::function<void(const std::string& sentence)> onTrouble)
    : m_path(std::move(file)), m_onTrouble(std::move(onTrouble)) {
    if (mode == RecordMode::Append && EndsWithinLine(m_path)) {
        m_waiting = "\n";
    }
    m_file.emplace(m_path, PrepareFile(m_path, mode));
    std::error_code none;
    m_size = std::filesystem::file_size(m_path, none);
}

Recorder::~Recorder() { Flush(); }

void Recorder::Add(const Exchange& exchange) {
    if (!m_file) {
        return;
    }
    m_waiting += FormatTranscriptLine(exchange) + "\n";
    if (m_waiting.size() >= kMostWaiting) {
        Flush();
    }
}

void Recorder::Flush() {
    if (!m_file || m_waiting.empty()) {
        return;
    }
    if (m_file->Write(m_waiting) < m_waiting.size()) {
        GiveUp(std::string(m_file->Problem()));
        return;
    }
    m_size += m_waiting.size();
    m_waiting.clear();
}

void Recorder::GiveUp(const std::string& problem) {
    m_file.reset();  // a file that is open cannot be cut everywhere
    m_waiting = {};
    // What was not written whole is cut off again: the record stays readable.
    std::error_code ignored;
    if (std::filesystem::is_regular_file(m_path, ignored)) {
        std::filesystem::resize_file(m_path, m_size, ignored);
    }
    m_onTrouble("the record " + PathText(m_path) + " ends here: " + problem);
}

bool IsSameFile(const std::filesystem::path& first, const std::filesystem::path& second) {
    std::error_code error;
    if (std::filesystem::equivalent(first, second, error) && !error) {
        return true;
    }
    // What is not there yet has nothing but its name.
    return std::filesystem::weakly_canonical(first, error) == std::filesystem::weakly_canonical(second, error) &&
           !error;
}

}  // namespace emulator
