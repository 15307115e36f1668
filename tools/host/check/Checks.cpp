#include "check/Checks.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ExitCode.h"
#include "check/Check.h"
#include "check/CheckLines.h"
#include "check/CheckReport.h"
#include "check/CheckRun.h"
#include "check/CheckServer.h"
#include "model/SystemFacts.h"
#include "platform/Boxes.h"
#include "platform/DynamicLibrary.h"
#include "platform/GrowingFile.h"
#include "platform/Interrupt.h"
#include "platform/PipedProcess.h"
#include "platform/SystemFacts.h"
#include "show/Output.h"
#include "text/Number.h"
#include "text/Text.h"
#include "transcript/Transcript.h"

namespace check {

namespace {

int SayThatNothingWasChecked(const std::string& why) {
    std::cerr << "oko-host: nothing was checked: " << why << "\n";
    return kExitNothingChecked;
}

/// Does what a check's process asks of the server, and gives the answer.
std::string AnswerTo(CheckServer& server, const std::string& question) {
    std::vector<std::string> texts = SplitTexts(question);
    const std::string what = texts.empty() ? std::string() : texts.front();
    texts.erase(texts.begin(), texts.begin() + std::min<std::ptrdiff_t>(1, std::ssize(texts)));
    std::vector<std::string> answer{"ok"};
    try {
        if (what == "commands") {
            std::ranges::transform(server.TakeCommands(), std::back_inserter(answer), emulator::Escape);
        } else if (what == "rules") {
            server.SetRules(texts);
        } else if (what == "scenario") {
            server.Begin(texts.empty() ? "" : texts.front());
        }
    } catch (const std::exception& error) {
        answer = {error.what()};
    }
    return JoinTexts(answer) + "\n";
}

/// Why a check would mean nothing here; empty where it can be made.
std::string WhyNot(Needs needs, const CheckRequest& request) {
    if (needs == Needs::ReplyTimeout && request.replyTimeoutSeconds <= 0.0) {
        return "without ReplyTimeout the library waits for a silent server for ever, on purpose";
    }
    const Fact<ServerInstallation> server = FindServerInstallation();
    if (needs == Needs::NoServer && server && server->entered) {
        return "a server is installed here, and Init would start it";
    }
    return needs == Needs::Windows && !HasWindows() ? "there are no windows and message queues on this system" : "";
}

std::filesystem::path ThisProgram() { return ProgramFolder() / (HasWindows() ? "oko-host.exe" : "oko-host"); }

CheckResult Described(const Check& check) {
    CheckResult result;
    result.name = check.name;
    result.device = check.device;
    result.holds = check.holds;
    return result;
}

/// Looks now and then for what the library shows to nobody.
class BoxLook {
 public:
    BoxLook(std::uint32_t process, bool close) : m_nProcess(process), m_bClose(close) {}

    void At(double seconds, CheckWitness& witness) {
        constexpr double kPeriod = 0.1;
        if (seconds >= m_dNext) {
            m_dNext = seconds + kPeriod;
            for (const std::string& box : BoxesOf(m_nProcess, m_bClose)) {
                witness.SeeBox(box);
            }
        }
    }

 private:
    std::uint32_t m_nProcess;
    bool m_bClose;
    double m_dNext = 0.0;
};

/// A check's process, which waits until it is told to begin: it comes up while an earlier one is at work.
std::unique_ptr<PipedProcess> StartProcess(const CheckRequest& request, const Check& check) {
    std::vector<std::string> arguments{"check-one", PathText(request.library), check.name};
    if (request.replyTimeoutSeconds > 0.0) {
        arguments.insert(arguments.end(), {"--reply-timeout", FormatShortest(request.replyTimeoutSeconds)});
    }
    return std::make_unique<PipedProcess>(ThisProgram(), arguments);
}

/// Lets a check's process begin, and follows it to its end, or to the end of its time.
CheckResult RunProcess(const CheckRequest& request, CheckServer& server, const Check& check, PipedProcess& process) {
    CheckResult result = Described(check);
    server.Begin({});
    const auto start = std::chrono::steady_clock::now();
    const auto passed = [start] {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    CheckWitness witness;
    BoxLook boxes(process.Id(), check.boxes);
    CheckLineReader reader([&](const CheckLine& line) {
        witness.Take(line);
        if (line.word == word::kAsk) {
            process.Write(AnswerTo(server, line.text));
        }
    });
    process.Write(std::string(word::kBegin) + "\n");
    const ProcessEnd end = process.Run([&](std::string_view piece) { reader.Take(piece); },
                                       [&] {
                                           boxes.At(passed(), witness);
                                           return passed() < request.timeLimitSeconds && !Interrupted();
                                       });
    witness.Judge(end, request.timeLimitSeconds, result);
    result.seconds = passed();
    return result;
}

/// What comes of the checks, each handed to `onResult` as soon as it is there, until that gives false.
void RunAll(const CheckRequest& request, CheckServer& server, const std::vector<const Check*>& checks,
            const std::function<bool(CheckResult)>& onResult) {
    std::unique_ptr<PipedProcess> next;
    const auto start = [&](std::size_t from) {
        for (std::size_t i = from; i < checks.size() && !next; ++i) {
            next = WhyNot(checks[i]->needs, request).empty() ? StartProcess(request, *checks[i]) : nullptr;
        }
    };
    start(0);
    for (std::size_t i = 0; i < checks.size(); ++i) {
        CheckResult result = Described(*checks[i]);
        result.reason = WhyNot(checks[i]->needs, request);
        result.verdict = CheckVerdict::Skipped;
        if (result.reason.empty()) {
            const std::unique_ptr<PipedProcess> process = std::exchange(next, nullptr);
            start(i + 1);
            result = RunProcess(request, server, *checks[i], *process);
        }
        if (Interrupted() || !onResult(std::move(result))) {
            return;
        }
    }
}

void WriteJunit(const CheckRequest& request, const std::vector<CheckResult>& results) {
    std::ofstream file(request.junit, std::ios::binary);
    file << CheckJunit(PathText(request.library), results) << std::flush;
    if (!file) {
        throw FileError("cannot write " + PathText(request.junit));
    }
}

int CodeOf(const std::vector<CheckResult>& results) {
    const auto is = [&](CheckVerdict verdict) {
        return std::ranges::find(results, verdict, &CheckResult::verdict) != results.end();
    };
    if (is(CheckVerdict::Failed) || is(CheckVerdict::Crashed) || is(CheckVerdict::Hung)) {
        return kExitCheckFailed;
    }
    return is(CheckVerdict::Passed) ? kExitDone : kExitNothingChecked;
}

int Tell(const CheckRequest& request, const std::vector<CheckResult>& results) {
    const int code = CodeOf(results);
    Print(request.json ? CheckJson(PathText(request.library), results) : CheckCounts(results) + "\n");
    if (!request.junit.empty()) {
        try {
            WriteJunit(request, results);
        } catch (const FileError& error) {
            std::cerr << "oko-host: " << error.what() << "\n";
            return code == kExitDone ? kExitNotWritten : code;
        }
    }
    if (Interrupted()) {
        return kExitInterrupted;
    }
    return code == kExitNothingChecked ? SayThatNothingWasChecked("every check was skipped") : code;
}

}  // namespace

int RunChecks(const CheckRequest& request) {
    const std::vector<const Check*> checks = ChooseChecks(AllChecks(), request.only);
    if (checks.empty()) {
        return SayThatNothingWasChecked("no check has such a name; --list shows them");
    }
    if (!std::filesystem::is_regular_file(request.library)) {
        return SayThatNothingWasChecked("there is no " + PathText(request.library));
    }
    CatchInterrupts();
    std::optional<CheckServer> server;
    try {
        server.emplace();
    } catch (const CheckServerError& error) {
        return SayThatNothingWasChecked(error.what());
    }

    std::vector<CheckResult> results;
    const auto add = [&](CheckResult result) {
        if (!request.json) {
            Print(CheckText(result) + "\n");
        }
        results.push_back(std::move(result));
    };
    std::string unusable;
    RunAll(request, *server, checks, [&](CheckResult result) {
        if (result.verdict == CheckVerdict::Unusable) {
            unusable = result.reason;
            return false;
        }
        const bool died = result.verdict == CheckVerdict::Crashed || result.verdict == CheckVerdict::Hung;
        const bool loads = !died || result.call != kLoadCall;
        add(std::move(result));
        return loads;  // each of the others would come to the same, and a hang takes its time
    });
    return unusable.empty() ? Tell(request, results) : SayThatNothingWasChecked(unusable);
}

int ListChecks(const CheckRequest& request) {
    const std::vector<const Check*> checks = ChooseChecks(AllChecks(), request.only);
    for (const Check* const check : checks) {
        Print(CheckListing(*check) + "\n");
    }
    return checks.empty() ? SayThatNothingWasChecked("no check has such a name") : kExitDone;
}

}  // namespace check
