#include <cstddef>
#include <exception>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>

#include "ExitCode.h"
#include "commands/Command.h"
#include "commands/Commands.h"
#include "keep/CsvFormat.h"
#include "keep/CsvReader.h"
#include "page/Report.h"
#include "platform/GrowingFile.h"
#include "show/Output.h"
#include "text/Text.h"

namespace {

struct ReportRequest {
    std::filesystem::path log;
    std::filesystem::path report;  // empty: beside the log
};

void Write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) {
        if (std::error_code error; std::filesystem::is_regular_file(file, error)) {
            std::filesystem::remove(file, error);  // half a report looks like a whole one
        }
        throw FileError("cannot write " + PathText(file));
    }
}

std::string Count(std::size_t number, const char* one, const char* many) {
    return std::to_string(number) + " " + (number == 1 ? one : many);
}

/// What was made of which device, in one line.
std::string Account(const std::string& report, const Log& log) {
    std::string line =
        report + ": " + log.header.device.name + (log.header.device.simulated ? " (simulated), " : ", ") +
        Count(log.timeMs.size(), "row", "rows") + " of " + Count(log.columns.size(), "channel", "channels") + ", " +
        Count(log.events.size(), "event", "events");
    if (!log.torn.empty()) {
        line += "; " + Count(log.torn.size(), "unfinished row was", "unfinished rows were") + " left out";
    }
    return line + "\n";
}

int FailWith(const std::exception& error, ExitCode code) {
    std::cerr << "oko-host: " << error.what() << "\n";
    return code;
}

int RunReport(const ReportRequest& request) {
    std::filesystem::path report = request.report;
    if (report.empty()) {
        report = request.log;
        report.replace_extension(".html");
    }
    if (report.lexically_normal() == request.log.lexically_normal()) {
        return FailWith(FileError("the report would take the log's place: name another file with --output"),
                        kExitNotWritten);
    }
    Log log;
    try {
        log = ReadCsv(request.log);
    } catch (const CsvError& error) {
        return FailWith(error, kExitBadFile);
    } catch (const FileError& error) {
        return FailWith(error, kExitBadFile);
    }
    try {
        Write(report, MakeReport(log, PathText(request.log.filename())));
    } catch (const FileError& error) {
        return FailWith(error, kExitNotWritten);
    }
    Print(Account(PathText(report), log));
    return kExitDone;
}

}  // namespace

void AddReportCommand(Command& program) {
    Command command = program.AddCommand("report", "Makes a page of a log: charts, summary and events in one file");
    const auto request = std::make_shared<ReportRequest>();
    command.AddOption("FILE.csv", request->log, "A log, as monitor and serve keep it with --csv").Required();
    command
        .AddOption("--output", request->report,
                   "The report; FILE.html beside the log when left out, and what is there is replaced")
        .Type("FILE");
    command.Footer(
        "Example:\n"
        "  oko-host report night.csv\n"
        "\n"
        "The report opens in any browser, from disk and without network.");
    command.Run([request] { return RunReport(*request); });
}
