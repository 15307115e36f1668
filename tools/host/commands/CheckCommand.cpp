// Holds a library against the contract, check by check.

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>

#include "check/Checks.h"
#include "commands/CommandLine.h"
#include "commands/Commands.h"
#include "platform/ReplyTimeout.h"

namespace {

CLI::Option* AddLibraryArgument(CLI::App& command, check::CheckRequest& request) {
    return command
        .add_option_function<std::string>(
            "PLUGIN",
            [&request](const std::string& name) { request.library = std::filesystem::absolute(PathOf(name)); },
            "The library, such as OkoLabBoldLine.dll")
        ->required();
}

void AddReplyTimeout(CLI::App& command, check::CheckRequest& request) {
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
void AddCheckOne(CLI::App& app, CommandRun& run) {
    CLI::App* const command = app.add_subcommand("check-one", "One check, in this process");
    command->group("");
    const auto request = std::make_shared<check::CheckRequest>();
    const auto name = std::make_shared<std::string>();
    AddLibraryArgument(*command, *request);
    command->add_option("NAME", *name)->required();
    AddReplyTimeout(*command, *request);
    command->callback(
        [request, name, &run] { run = [request, name] { return check::RunCheckHere(*request, *name); }; });
}

}  // namespace

void AddCheckCommand(CLI::App& app, CommandRun& run) {
    CLI::App* const command =
        app.add_subcommand("check", "Holds a library against the contract, call by call and fault by fault");
    const auto request = std::make_shared<check::CheckRequest>();
    const auto list = std::make_shared<bool>(false);
    AddLibraryArgument(*command, *request)->required(false);
    command->add_option("--only", request->only, "Only these checks; * stands for any characters")->type_name("NAME");
    command->add_flag("--list", *list, "Shows the checks and what each of them holds, and makes none");
    AddDuration(*command, "--time-limit", request->timeLimitSeconds, "How long one check may take; 20s when left out");
    AddReplyTimeout(*command, *request);
    command->add_flag("--json", request->json, "Writes JSON, for programs");
    command
        ->add_option_function<std::string>(
            "--junit", [request](const std::string& file) { request->junit = PathOf(file); },
            "Writes the results as JUnit's XML, too")
        ->type_name("FILE");
    command->footer(kCheckFooter);
    command->callback([request, list, &run] {
        if (!*list && request->library.empty()) {
            throw CLI::RequiredError("PLUGIN");
        }
        if (request->replyTimeoutSeconds <= 0.0) {
            request->replyTimeoutSeconds = LibraryReplyTimeout().value_or(0.0);
        }
        run = [request, list] { return *list ? check::ListChecks(*request) : check::RunChecks(*request); };
    });
    AddCheckOne(app, run);
}
