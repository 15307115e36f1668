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

void ExchangeLog::Show(const Exchange& exchange) {
    if (!m_options.quiet) {
        m_output.Show(FormatTranscriptLine(exchange));
    }
}

void ExchangeLog::Add(const Exchange& exchange) {
    Show(exchange);
    if (m_recorder) {
        // At once: what a client has seen answered is in the record, whatever happens next.
        m_recorder->Add(exchange);
        m_recorder->Flush();
    }
}

}  // namespace emulator
