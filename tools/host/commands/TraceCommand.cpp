// Shows every exchange between library and server, as the library logs it.

#include <cstddef>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "commands/WatchRequest.h"
#include "commands/Watching.h"
#include "judge/Exchanges.h"
#include "model/DeviceMessage.h"
#include "model/SystemFacts.h"
#include "platform/GrowingFile.h"
#include "platform/Interrupt.h"
#include "platform/LogSwitch.h"
#include "platform/SystemFacts.h"
#include "show/Output.h"
#include "text/Text.h"

namespace {

struct TraceRequest {
    WatchRequest watch;
    double seconds = 0.0;          // 0: until Ctrl+C
    std::filesystem::path output;  // empty: the standard output
    bool switchOn = false;
};

constexpr const char* kHowToLog =
    "set the REG_DWORD LogCommunication to 1 under HKEY_LOCAL_MACHINE\\Software\\Vellmark\\Misc as administrator, or "
    "let "
    "trace do it for this run: --switch-on";

int Fail(const std::string& sentence, ExitCode code) {
    std::cerr << "oko-host: " << sentence << std::endl;
    return code;
}

/// True: it is on. Where nobody can tell, the first exchange will.
bool LibraryLogs() {
    const auto switches = ReadLibrarySwitches();
    return !switches ||
           (switches->logCommunication.kind == RegistrySwitch::Kind::Number && switches->logCommunication.number == 1);
}

/// Where the exchanges go. What cannot be written is said once, and ends the trace.
class Transcript {
 public:
    /// Throws FileError.
    explicit Transcript(const std::filesystem::path& file) {
        if (!file.empty()) {
            m_file.emplace(file, GrowingFile::Mode::Create);
        }
    }

    void Take(const DeviceMessage& message) {
        const auto exchange = m_times.Take(message);
        if (!exchange || m_bFailed) {
            return;
        }
        const std::string line = TranscriptLine(*exchange) + "\n";
        ++m_nLines;
        try {
            if (!m_file) {
                Print(line);
            } else if (m_file->Write(line) < line.size()) {
                throw OutputError("the transcript cannot be written: " + m_file->Problem());
            }
        } catch (const OutputError& error) {
            m_bFailed = true;
            Fail(error.what(), kExitNotWritten);
        }
    }

    bool Failed() const { return m_bFailed; }
    std::size_t Lines() const { return m_nLines; }

 private:
    ExchangeTimes m_times;
    std::optional<GrowingFile> m_file;
    std::size_t m_nLines = 0;
    bool m_bFailed = false;
};

int RunTraced(const TraceRequest& request) {
    Transcript transcript(request.output);
    WatchParts parts;
    // The output is a transcript and nothing else.
    parts.announce = [](const std::vector<std::string>& lines) { std::cerr << JoinLines(lines) << std::flush; };
    parts.onMessage = [&](const DeviceMessage& message) { transcript.Take(message); };
    parts.isEnough = [&] { return transcript.Failed(); };
    const int code = RunWatch(request.watch, parts);
    if (transcript.Failed()) {
        return kExitNotWritten;
    }
    if (transcript.Lines() == 0 && code == kExitDone) {
        return Fail(std::string("the library logged no exchange: ") + kHowToLog, kExitProblem);
    }
    std::cerr << transcript.Lines() << " exchanges" << (request.output.empty() ? "" : " in " + PathText(request.output))
              << std::endl;
    return code;
}

int RunTrace(TraceRequest request) {
    if (request.seconds > 0.0) {
        request.watch.seconds = request.seconds;
    }
    CatchInterrupts();  // before anything is switched that must be put back
    if (!request.switchOn) {
        return LibraryLogs() ? RunTraced(request)
                             : Fail(std::string("the library does not log its exchanges: ") + kHowToLog, kExitProblem);
    }
    try {
        const LogSwitch on;
        return RunTraced(request);
    } catch (const LogSwitchError& error) {
        return Fail(error.what(), kExitProblem);
    }
}

}  // namespace

void AddTraceCommand(Command& program) {
    Command command =
        program.AddCommand("trace", "Shows every exchange of the library with the server, with its duration");
    const auto request = std::make_shared<TraceRequest>();
    AddDeviceOptions(command, request->watch);
    AddDuration(command, "--every", request->watch.device.intervalSeconds, "Time between two rounds of reads");
    AddDuration(command, "--for", request->seconds, "How long, such as 10s; until Ctrl+C when left out");
    AddRowsOption(command, request->watch, "Ends after so many rounds of reads; with --for, whichever comes first");
    command.AddOption("--output", request->output, "Writes the transcript into a new file").Type("FILE");
    command.AddFlag("--switch-on", request->switchOn,
                    "Sets LogCommunication to 1 for this run and puts back what was there; needs administrator rights");
    command.Footer(
        "Examples:\n"
        "  oko-host trace --device simulator --for 5s --switch-on\n"
        "  oko-host trace --device incubator --for 1min --switch-on --output trouble.tsv\n"
        "  oko-control-emulator --replay trouble.tsv\n"
        "\n"
        "A line an exchange: seconds and duration with a blank in between, command and reply, with tabs in between;\n"
        "\"-\" is no answer. An exchange counts from the end of the one before it in the same call of the library: a\n"
        "pause that the library makes in between, as while it starts the server, is part of it. What is not printable\n"
        "is written as \\r or \\x7F. A program that is killed cannot put LogCommunication back; \"oko-host doctor\" "
        "tells.");
    command.Run([request] { return RunTrace(*request); });
}
