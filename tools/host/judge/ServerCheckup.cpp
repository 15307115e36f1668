#include "judge/ServerCheckup.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "judge/Checkup.h"
#include "model/SystemFacts.h"
#include "text/Duration.h"
#include "text/Words.h"

namespace {

constexpr const char* kInstall = "install the OKO-Control Server";
constexpr const char* kLibraryStartsIt = "nothing: the library starts it with the device";

enum class Code { Success, ServerTrouble, ProductTrouble, Refused, Other };

/// A reply is code, "_", the command, "_", payload, carriage return.
struct ServerReply {
    bool fits = false;
    Code code = Code::Other;
    std::string payload;
};

ServerReply ReadReply(std::string_view reply, std::string_view command) {
    const std::string head = "_" + std::string(command) + "_";
    if (reply.empty() || !reply.substr(1).starts_with(head)) {
        return {};
    }
    const std::string_view payload = reply.substr(1 + head.size());
    const char digit = reply.front();
    const Code code = digit >= '0' && digit <= '3' ? static_cast<Code>(digit - '0') : Code::Other;
    return {true, code, std::string(payload.substr(0, payload.find_first_of("\r\n")))};
}

/// For people: what is not printable becomes a question mark.
std::string Shown(std::string_view text) {
    std::string shown(text.substr(0, text.find_first_of("\r\n")));
    std::ranges::replace_if(shown, [](char c) { return c < ' ' || c > '~'; }, '?');
    return InQuotes(shown);
}

bool HasReply(const Fact<ServerAnswer>& answer) {
    return answer && answer->kind == AnswerKind::Reply && !answer->reply.empty();
}

bool Runs(const SystemFacts& facts) { return facts.servers && !facts.servers->empty(); }

bool CanBeStarted(const SystemFacts& facts) { return facts.installation && !facts.installation->program.empty(); }

Finding JudgeInstallation(const SystemFacts& facts) {
    const std::string check = "server installed";
    if (!facts.installation) {
        return {check, Verdict::Note, "not known: " + facts.installation.unknown, "see that the server runs"};
    }
    const ServerInstallation& found = *facts.installation;
    // A server that answers need not be found.
    const Verdict trouble = HasReply(facts.products) ? Verdict::Note : Verdict::Problem;
    if (!found.entered) {
        return {check, trouble,
                found.inOtherList ? "only in the list of 64-bit programs, where the library does not look"
                                  : "the list of installed programs does not have it",
                std::string(kInstall) + ", or start it by hand before the device is started"};
    }
    if (found.program.empty()) {
        const bool separated = found.folder.ends_with('\\') || found.folder.ends_with('/');
        return {check, trouble, "entered, but the library finds no program OKO-Control*.exe in " + found.folder,
                separated ? std::string(kInstall) + " again"
                          : "end InstallLocation in its registry entry with a backslash: without it the library "
                            "replaces the last character by one"};
    }
    return {check, Verdict::Ok, found.program + " in " + found.folder, ""};
}

Finding JudgeProcess(const SystemFacts& facts) {
    const std::string check = "server running";
    if (!facts.servers) {
        return {check, Verdict::Note, "not known: " + facts.servers.unknown, "look at the task manager"};
    }
    if (facts.servers->empty()) {
        return {check, Verdict::Note, "no program OKO-Control*.exe runs",
                HasReply(facts.products) || CanBeStarted(facts) ? kLibraryStartsIt
                                                                : std::string(kInstall) + " and start it"};
    }
    std::vector<std::string> names;
    std::ranges::transform(*facts.servers, std::back_inserter(names), [](const RunningProgram& program) {
        return program.name + " (process " + std::to_string(program.id) + ")";
    });
    return {check, names.size() == 1 ? Verdict::Ok : Verdict::Note, JoinWords(names, "and"),
            names.size() == 1 ? "" : "end all but one: only one can have the port"};
}

Finding JudgeSilence(const SystemFacts& facts, const std::string& fact) {
    const std::string check = "server answer";
    if (Runs(facts)) {
        return {check, Verdict::Problem, fact + ", although the server runs",
                "wait for a search that it may be in; else end it and start it again"};
    }
    if (facts.portHolder && facts.portHolder->taken) {
        return {check, Verdict::Problem, fact + ", and another program has its port", "see \"server port\""};
    }
    if (CanBeStarted(facts)) {
        return {check, Verdict::Note, fact + ": the server does not run", kLibraryStartsIt};
    }
    return {check, Verdict::Problem, fact, std::string(kInstall) + " and start it"};
}

Finding JudgeAnswer(const SystemFacts& facts) {
    const std::string check = "server answer";
    if (!facts.products) {
        return {check, Verdict::Note, "not known: " + facts.products.unknown, "ask on the computer of the server"};
    }
    const ServerAnswer& answer = *facts.products;
    if (answer.kind == AnswerKind::Refused) {
        return JudgeSilence(facts, "nobody listens on 127.0.0.1:60000");
    }
    if (answer.kind == AnswerKind::Silence) {
        return JudgeSilence(facts, "no answer from 127.0.0.1:60000 within " + FormatDuration(answer.seconds));
    }
    if (answer.reply.empty()) {
        return JudgeSilence(facts, "an empty answer from 127.0.0.1:60000, which counts as none");
    }
    const ServerReply reply = ReadReply(answer.reply, "listprod");
    if (!reply.fits) {
        return {check, Verdict::Problem, "127.0.0.1:60000 answers " + Shown(answer.reply) + ", as no server does",
                "see \"server port\" for who answers, and end that program"};
    }
    if (reply.code == Code::Refused) {
        return {check, Verdict::Problem, "the server refuses: it has trouble with a product",
                "look at the server's own window; the library would not start the device"};
    }
    if (reply.code != Code::Success) {
        return {check, Verdict::Note, "it answers, and reports trouble: " + Shown(answer.reply),
                "look at the server's own window"};
    }
    return {check, Verdict::Ok, "127.0.0.1:60000 answers within " + FormatDuration(answer.seconds), ""};
}

Finding JudgeHolder(const SystemFacts& facts) {
    const std::string check = "server port";
    if (!facts.portHolder) {
        return {check, Verdict::Note, "who has UDP port 60000 is not known: " + facts.portHolder.unknown,
                "\"netstat -a -b -p udp\" as administrator tells it"};
    }
    const bool answers = HasReply(facts.products) && ReadReply(facts.products->reply, "listprod").fits;
    const PortHolder& holder = *facts.portHolder;
    if (!holder.taken) {
        return answers ? Finding{check, Verdict::Note, "somebody has UDP port 60000; the system does not tell who", ""}
                       : Finding{check, Verdict::Ok, "UDP port 60000 is free for the server", ""};
    }
    if (holder.program.name.empty()) {
        return {check, Verdict::Note, "taken; the system does not tell by whom",
                "\"netstat -a -b -p udp\" as administrator tells it"};
    }
    const std::string fact =
        "UDP port 60000 belongs to " + holder.program.name + " (process " + std::to_string(holder.program.id) + ")";
    if (IsServerName(holder.program.name)) {
        return {check, Verdict::Ok, fact, ""};
    }
    return {check, answers ? Verdict::Note : Verdict::Problem, fact + ", which is not the server by its name",
            answers ? "nothing, if it is meant to stand in for the server" : "end it, or give it another port"};
}

Finding JudgeProducts(const Fact<ServerAnswer>& answer) {
    const std::string check = "products";
    if (!HasReply(answer)) {
        return {check, Verdict::Problem, "the server does not tell which are connected",
                "look at the server's own window; a search may be under way"};
    }
    const ServerReply reply = ReadReply(answer->reply, "listconprod");
    if (!reply.fits || reply.code > Code::ProductTrouble || reply.payload.starts_with('e')) {
        return {check, Verdict::Problem, "the server does not tell which are connected: " + Shown(answer->reply),
                "look at the server's own window"};
    }
    if (reply.payload.find_first_not_of(' ') == std::string::npos) {
        return {check, Verdict::Problem, "the server has none connected",
                "switch the incubator on; \"oko-host connect --device incubator\" searches for it"};
    }
    return {check, reply.code == Code::Success ? Verdict::Ok : Verdict::Note, "connected: " + Shown(reply.payload),
            reply.code == Code::Success ? "" : "the server reports trouble: look at its own window"};
}

}  // namespace

std::vector<Finding> ExamineServer(const SystemFacts& facts) {
    std::vector<Finding> findings{JudgeInstallation(facts), JudgeProcess(facts), JudgeAnswer(facts),
                                  JudgeHolder(facts)};
    if (HasReply(facts.products)) {
        findings.push_back(JudgeProducts(facts.connectedProducts));
    }
    return findings;
}
