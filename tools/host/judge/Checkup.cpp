#include "judge/Checkup.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "judge/LibraryCheckup.h"
#include "judge/ServerCheckup.h"
#include "model/SystemFacts.h"
#include "text/Number.h"
#include "text/Words.h"

namespace {

constexpr const char* kConnect = "\"oko-host connect --device incubator\" finds or asks the port and keeps it";

std::string PortText(int number) { return "COM" + std::to_string(number); }

Finding JudgePorts(const SystemFacts& facts) {
    const std::string check = "COM ports";
    if (!facts.serialPorts) {
        return {check, Verdict::Note, "not known: " + facts.serialPorts.unknown, "look at the device manager"};
    }
    if (facts.serialPorts->empty()) {
        return {check, Verdict::Problem, "there is none",
                "plug the incubator's cable in; if it is, install the driver of its USB adapter"};
    }
    std::vector<std::string> names;
    std::ranges::transform(*facts.serialPorts, std::back_inserter(names), PortText);
    return {check, Verdict::Ok, JoinWords(names, "and"), ""};
}

Finding JudgePort(const SystemFacts& facts) {
    const std::string check = "the incubator's port";
    const SettingsFacts& settings = facts.settings;
    const auto port = facts.askedPort ? facts.askedPort : settings.port;
    if (!port) {
        return {check, Verdict::Problem,
                settings.found ? settings.file + " names none" : "not known: there is no " + settings.file,
                std::string(kConnect) + "; or name it, as in --port 3"};
    }
    const std::string fact = PortText(*port) + (facts.askedPort ? ", from --port" : ", stored in " + settings.file);
    if (facts.serialPorts && std::ranges::find(*facts.serialPorts, *port) == facts.serialPorts->end()) {
        return {check, Verdict::Problem, fact + "; this computer has no such port now",
                std::string("plug the incubator's cable in where it was, or: ") + kConnect};
    }
    return {check, Verdict::Ok, fact, ""};
}

Finding JudgeAlarms(const SystemFacts& facts) {
    const std::string check = "alarm tolerances";
    if (facts.settings.alarms.empty()) {
        return {check, Verdict::Note, "none are stored: the server keeps its own, and none are sent",
                "\"oko-host configure --device incubator\" sets and keeps them"};
    }
    return {check, Verdict::Ok, "stored, and sent when the device is started: " + facts.settings.alarms, ""};
}

constexpr const char* kKey = R"(HKEY_LOCAL_MACHINE\Software\Vellmark\Misc)";

Finding JudgeLog(const RegistrySwitch& value) {
    const std::string check = "LogCommunication";
    if (value.kind == RegistrySwitch::Kind::OtherType) {
        return {check, Verdict::Note, "it is there but no REG_DWORD, so it counts as off",
                std::string("make it a REG_DWORD under ") + kKey + ", or delete it"};
    }
    if (value.kind == RegistrySwitch::Kind::Number && value.number == 1) {
        return {check, Verdict::Note, "on: the library gives every exchange to its host's log, which grows by it",
                std::string("set it to 0 under ") + kKey + " when nobody needs it"};
    }
    return {check, Verdict::Ok, "off: the library does not log its exchanges; \"oko-host trace\" shows them", ""};
}

Finding JudgeTimeout(const RegistrySwitch& value) {
    const std::string check = "ReplyTimeout";
    const std::string advice =
        std::string("as administrator, set the REG_DWORD ReplyTimeout to 2000 (milliseconds) under ") + kKey;
    if (value.kind == RegistrySwitch::Kind::OtherType) {
        return {check, Verdict::Note, "it is there but no REG_DWORD, so it counts as not set", advice};
    }
    if (value.kind == RegistrySwitch::Kind::Absent || value.number == 0) {
        return {check, Verdict::Note,
                "not set: the library waits for ever for a server that keeps silent, and its host with it", advice};
    }
    return {check, Verdict::Ok,
            FormatShortest(value.number / 1000.0) + " s: after it the library gives up waiting for a reply", ""};
}

void JudgeSwitches(const SystemFacts& facts, std::vector<Finding>& findings) {
    if (facts.switches) {
        findings.push_back(JudgeLog(facts.switches->logCommunication));
        findings.push_back(JudgeTimeout(facts.switches->replyTimeout));
    } else {
        findings.push_back(
            {"registry", Verdict::Note, "not known: " + facts.switches.unknown, std::string("look under ") + kKey});
    }
}

}  // namespace

std::vector<Finding> Examine(const SystemFacts& facts) {
    std::vector<Finding> findings = ExamineLibrary(facts);
    std::vector<Finding> real = ExamineServer(facts);
    real.push_back(JudgePorts(facts));
    real.push_back(JudgePort(facts));
    real.push_back(JudgeAlarms(facts));
    for (Finding& finding : real) {
        if (!facts.incubator && finding.verdict == Verdict::Problem) {
            finding.verdict = Verdict::Note;
            finding.next = "the simulator does without; for the incubator: " + finding.next;
        }
        findings.push_back(finding);
    }
    JudgeSwitches(facts, findings);
    return findings;
}

const char* VerdictName(Verdict verdict) {
    switch (verdict) {
        case Verdict::Ok:
            return "ok";
        case Verdict::Note:
            return "note";
        case Verdict::Problem:
            break;
    }
    return "problem";
}

bool HasProblem(const std::vector<Finding>& findings) {
    return std::ranges::find(findings, Verdict::Problem, &Finding::verdict) != findings.end();
}
