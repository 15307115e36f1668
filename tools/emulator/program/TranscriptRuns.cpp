#include <cstddef>
#include <iostream>
#include <optional>

#include "net/Address.h"
#include "net/Check.h"
#include "program/Options.h"
#include "program/Run.h"
#include "program/RunFrame.h"
#include "program/TranscriptFile.h"
#include "transcript/Replay.h"
#include "transcript/Show.h"

namespace emulator {

namespace {

constexpr std::size_t kUsualWidth = 120;

}  // namespace

int RunCheck(const Options& options) {
    RunFrame frame(options);
    Check::Options checking;
    checking.server = FindServer(options.checked);
    checking.withPauses = options.timing == ReplayTiming::Recorded;
    checking.tolerance = options.tolerance;
    std::optional<CheckReport> report;
    Check check(frame.Context(), ReadTranscriptFile(options.check), checking, [&](const CheckReport& done) {
        report = done;
        frame.End();
    });
    frame.Run([] {});
    check.Stop();
    if (!report) {
        return kExitDifferences;
    }
    std::cout << FormatCheckReport(*report) << std::flush;
    return report->differences.empty() && report->exchanges == report->all ? kExitDone : kExitDifferences;
}

void RunShow(const Options& options) {
    std::cout << ShowTranscript(ReadTranscriptFile(options.show), kUsualWidth) << std::flush;
}

}  // namespace emulator
