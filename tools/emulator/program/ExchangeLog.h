#pragma once

#include <optional>

#include "program/LineOutput.h"
#include "program/Options.h"
#include "transcript/Recorder.h"
#include "transcript/Transcript.h"

namespace emulator {

/// Where the exchanges of a run go: a line each on the output, unless the options want it quiet, and into the record.
class ExchangeLog {
 public:
    /// `output` must outlive it.
    ExchangeLog(const Options& options, LineOutput& output) : m_options(options), m_output(output) {}

    /// Opens the record. Not before the port is ours: a running emulator may be writing the same file. Throws
    /// TranscriptError or FileError.
    void Open();

    /// Whether anybody wants to know.
    bool IsWanted() const { return !m_options.quiet || m_recorder.has_value(); }

    /// Shows and records it.
    void Add(const Exchange& exchange);

    /// Only shows it.
    void Show(const Exchange& exchange);

 private:
    const Options& m_options;
    LineOutput& m_output;
    std::optional<Recorder> m_recorder;
};

}  // namespace emulator
