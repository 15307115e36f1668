// Holds a library against the contract, check by check.

#include <filesystem>
#include <memory>
#include <string>

#include "check/Checks.h"
#include "commands/Command.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "platform/ReplyTimeout.h"

namespace {

CommandOption AddLibraryArgument(Command& command, check::CheckRequest& request) {
    const auto take = [&request](const std::string& name) {
        request.library = std::filesystem::absolute(PathOf(name));
        return std::string();
    };
    return command.AddOption("PLUGIN", take, "The library, such as OkoLabBoldLine.dll");
}

void AddReplyTimeout(Command& command, check::CheckRequest& request) {
    AddDuration(command, "--reply-timeout", request.replyTimeoutSeconds,
                "How long the library waits for an answer; its ReplyTimeout when left out, else for ever");
}

constexpr const char* kCheckFooter =
    "Examples:\n"
    "  oko-host check OkoLabBoldLine.dll\n"
    "  oko-host check OkoLabBoldLine.dll --only read/* --only channel/names\n"
    "  oko-host check OkoLabBoldLine.dll --junit check.xml\n"
    "\n"
    "Each check runs in a process of its own, against an emulated server in this one, which needs UDP port 60000 of\n"
    "this computer for itself. No incubator and no server is touched. A library that waits for ever for a silent\n"
    "server, as it does without its ReplyTimeout, is not asked to meet one.\n"
    "\n"
    "The exit code is 0 when all checks passed that were not skipped, 1 when one failed, crashed or hung, and 2 when\n"
    "nothing was checked: no such library, no such check, no emulator in this program, or the port is taken.";

/// What a check starts; nobody else has a use for it.
void AddCheckOne(Command& program) {
    Command command = program.AddCommand("check-one", "One check, in this process");
    command.Hide();
    const auto request = std::make_shared<check::CheckRequest>();
    const auto name = std::make_shared<std::string>();
    AddLibraryArgument(command, *request).Required();
    command.AddOption("NAME", *name, "").Required();
    AddReplyTimeout(command, *request);
    command.Run([request, name] { return check::RunCheckHere(*request, *name); });
}

}  // namespace

void AddCheckCommand(Command& program) {
    Command command =
        program.AddCommand("check", "Holds a library against the contract, call by call and fault by fault");
    const auto request = std::make_shared<check::CheckRequest>();
    const auto list = std::make_shared<bool>(false);
    AddLibraryArgument(command, *request);
    command.AddOption("--only", request->only, "Only these checks; * stands for any characters").Type("NAME");
    command.AddFlag("--list", *list, "Shows the checks and what each of them holds, and makes none");
    AddDuration(command, "--time-limit", request->timeLimitSeconds, "How long one check may take; 20s when left out");
    AddReplyTimeout(command, *request);
    command.AddFlag("--json", request->json, "Writes JSON, for programs");
    command.AddOption("--junit", request->junit, "Writes the results as JUnit's XML, too").Type("FILE");
    command.Footer(kCheckFooter);
    command.Run([request, list] {
        if (!*list && request->library.empty()) {
            throw MissingArgument("PLUGIN");
        }
        if (request->replyTimeoutSeconds <= 0.0) {
            request->replyTimeoutSeconds = LibraryReplyTimeout().value_or(0.0);
        }
        return *list ? check::ListChecks(*request) : check::RunChecks(*request);
    });
    AddCheckOne(program);
}
