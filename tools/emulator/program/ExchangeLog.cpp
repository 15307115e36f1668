#include "program/ExchangeLog.h"

#include <string>

#include "transcript/Recorder.h"
#include "transcript/Transcript.h"

namespace emulator {

void ExchangeLog::Open() {
    if (!m_options.record.empty()) {
        m_recorder.emplace(m_options.record, m_options.recordMode,
                           [this](const std::string& sentence) { m_output.Say("warning: " + sentence); });
    }
}

void ExchangeLog::Add(const Exchange& exchange) {
    if (!m_options.quiet) {
        m_output.Show(FormatTranscriptLine(exchange));
    }
    if (m_recorder) {
        m_recorder->Add(exchange);
    }
}

void ExchangeLog::Flush() {
    if (m_recorder) {
        m_recorder->Flush();
    }
}

}  // namespace emulator
