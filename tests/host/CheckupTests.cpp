// What `oko-host doctor` makes of what the computer tells.

#include "judge/Checkup.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "RunHost.h"
#include "model/SystemFacts.h"
#include "show/CheckupText.h"

namespace {

using Json = nlohmann::json;

ServerAnswer Answered(const std::string& reply) { return {AnswerKind::Reply, reply, 0.001}; }

/// A computer on which all is well.
SystemFacts Healthy() {
    SystemFacts facts;
    facts.programVersion = "1.0.0";
    facts.library = {"OkoLabBoldLine.dll", true, "", {}, Fact<std::string>::Of("1.0.0.0"), {"real", "simulated"}};
    facts.installation = Fact<ServerInstallation>::Of({true, false, "C:\\OKO\\", "OKO-Control.exe"});
    facts.servers = Fact<std::vector<RunningProgram>>::Of({{42, "OKO-Control.exe"}});
    facts.portHolder = Fact<PortHolder>::Of({true, {42, "OKO-Control.exe"}});
    facts.products = Fact<ServerAnswer>::Of(Answered("0_listprod_7 9 12\r"));
    facts.connectedProducts = Fact<ServerAnswer>::Of(Answered("0_listconprod_9 12\r"));
    facts.serialPorts = Fact<std::vector<int>>::Of({1, 3});
    facts.settings = {"oko-host.ini", true, 3, "dIncubatorBelow 0.2"};
    facts.switches = Fact<LibrarySwitches>::Of({{}, {RegistrySwitch::Kind::Number, 2000}});
    return facts;
}

Finding FindingOf(const SystemFacts& facts, const std::string& check) {
    const auto findings = Examine(facts);
    const auto found = std::ranges::find(findings, check, &Finding::check);
    return found != findings.end() ? *found : Finding{"nothing is called " + check, Verdict::Ok, "", ""};
}

/// The verdict, and that people are told what to do unless all is well.
void Expect(const SystemFacts& facts, const std::string& check, Verdict verdict, const std::string& fact) {
    SCOPED_TRACE(check);
    const Finding finding = FindingOf(facts, check);
    EXPECT_EQ(finding.check, check);
    EXPECT_STREQ(VerdictName(finding.verdict), VerdictName(verdict));
    EXPECT_NE(finding.fact.find(fact), std::string::npos) << finding.fact;
    EXPECT_EQ(finding.next.empty(), verdict == Verdict::Ok) << finding.next;
}

TEST(Checkup, HealthyComputer_HasNothingToDo) {
    for (const Finding& finding : Examine(Healthy())) {
        EXPECT_STREQ(VerdictName(finding.verdict), "ok") << finding.check << ": " << finding.fact;
        EXPECT_EQ(finding.next, "") << finding.check;
    }
    EXPECT_FALSE(HasProblem(Examine(Healthy())));
    EXPECT_GE(Examine(Healthy()).size(), 14U);
}

TEST(Checkup, Library_MissingOrUnfitIsAProblemAndWhatFollowsFromItIsLeftOut) {
    SystemFacts facts = Healthy();
    facts.library.missingExports = {"LibQueryInterface"};
    Expect(facts, "library", Verdict::Ok, "found and loaded");
    Expect(facts, "library exports", Verdict::Problem, "LibQueryInterface missing");
    EXPECT_NE(FindingOf(facts, "devices").check, "devices");
    facts.library.loadError = "cannot load it (system error 193)";
    Expect(facts, "library", Verdict::Problem, "system error 193");
    EXPECT_NE(FindingOf(facts, "library exports").check, "library exports");
    facts.library.found = false;
    Expect(facts, "library", Verdict::Problem, "there is no OkoLabBoldLine.dll");
}

TEST(Checkup, LibraryVersion_ThatIsAnotherOrUnknownIsWorthANote) {
    SystemFacts facts = Healthy();
    facts.library.version = Fact<std::string>::Of("1.0.0");
    Expect(facts, "library version", Verdict::Ok, "1.0.0");
    facts.library.version = Fact<std::string>::Of("1.0.0.1");
    Expect(facts, "library version", Verdict::Note, "1.0.0.1, and this program is 1.0.0");
    facts.library.version = Fact<std::string>::Unknown("no resource");
    Expect(facts, "library version", Verdict::Note, "not known: no resource");
}

TEST(Checkup, LibraryWithoutDevices_IsAProblem) {
    SystemFacts facts = Healthy();
    facts.library.devices.clear();
    Expect(facts, "devices", Verdict::Problem, "none");
}

TEST(Checkup, ServerThatIsNotInstalled_IsAProblemUnlessOneAnswers) {
    SystemFacts facts = Healthy();
    facts.installation = Fact<ServerInstallation>::Of({});
    Expect(facts, "server installed", Verdict::Note, "does not have it");
    facts.installation = Fact<ServerInstallation>::Of({false, true, "", ""});
    Expect(facts, "server installed", Verdict::Note, "only in the list of 64-bit programs");
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Silence, "", 3.0});
    Expect(facts, "server installed", Verdict::Problem, "only in the list of 64-bit programs");
}

TEST(Checkup, InstallationWithoutProgram_SaysWhatIsWrongWithTheEntry) {
    SystemFacts facts = Healthy();
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Refused, "", 0.0});
    facts.installation = Fact<ServerInstallation>::Of({true, false, "C:\\OKO\\", ""});
    Expect(facts, "server installed", Verdict::Problem, "no program OKO-Control*.exe in C:\\OKO\\");
    EXPECT_NE(FindingOf(facts, "server installed").next.find("install the OKO-Control Server again"),
              std::string::npos);
    facts.installation = Fact<ServerInstallation>::Of({true, false, "C:\\OKO", ""});
    EXPECT_NE(FindingOf(facts, "server installed").next.find("with a backslash"), std::string::npos);
}

TEST(Checkup, SilentServer_IsJudgedByWhatRunsAndWhatCouldBeStarted) {
    SystemFacts facts = Healthy();
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Silence, "", 3.0});
    Expect(facts, "server answer", Verdict::Problem, "within 3 s, although the server runs");
    facts.servers = Fact<std::vector<RunningProgram>>::Of({});
    Expect(facts, "server running", Verdict::Note, "no program");
    Expect(facts, "server answer", Verdict::Problem, "another program has its port");
    facts.portHolder = Fact<PortHolder>::Of({});
    Expect(facts, "server answer", Verdict::Note, "the server does not run");
    EXPECT_FALSE(HasProblem(Examine(facts)));
    facts.installation = Fact<ServerInstallation>::Of({});
    Expect(facts, "server answer", Verdict::Problem, "no answer from 127.0.0.1:60000 within 3 s");
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Refused, "", 0.0});
    Expect(facts, "server answer", Verdict::Problem, "nobody listens");
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Reply, "", 0.0});
    Expect(facts, "server answer", Verdict::Problem, "an empty answer");
    EXPECT_NE(FindingOf(facts, "products").check, "products");
}

TEST(Checkup, Answer_IsJudgedByItsCode) {
    SystemFacts facts = Healthy();
    facts.products = Fact<ServerAnswer>::Of(Answered("1_listprod_9\r"));
    Expect(facts, "server answer", Verdict::Note, "\"1_listprod_9\"");
    facts.products = Fact<ServerAnswer>::Of(Answered("3_listprod_9\r"));
    Expect(facts, "server answer", Verdict::Problem, "refuses");
    facts.products = Fact<ServerAnswer>::Of(Answered("HTTP/1.1 \x01 400"));
    Expect(facts, "server answer", Verdict::Problem, "\"HTTP/1.1 ? 400\", as no server does");
}

TEST(Checkup, SeveralServers_AreWorthANote) {
    SystemFacts facts = Healthy();
    facts.servers = Fact<std::vector<RunningProgram>>::Of({{42, "OKO-Control.exe"}, {43, "OKO-Control Emulator.exe"}});
    Expect(facts, "server running", Verdict::Note, "OKO-Control.exe (process 42) and OKO-Control Emulator.exe");
}

TEST(Checkup, PortOfTheServer_InOtherHandsIsAProblemWhenTheyAreSilent) {
    SystemFacts facts = Healthy();
    facts.portHolder = Fact<PortHolder>::Of({true, {7, "other.exe"}});
    Expect(facts, "server port", Verdict::Note, "other.exe (process 7), which is not the server");
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Silence, "", 3.0});
    Expect(facts, "server port", Verdict::Problem, "other.exe");
    facts.portHolder = Fact<PortHolder>::Of({true, {}});
    Expect(facts, "server port", Verdict::Note, "does not tell by whom");
    facts.portHolder = Fact<PortHolder>::Of({true, {7, "oko-CONTROL-emulator.EXE"}});
    Expect(facts, "server port", Verdict::Ok, "oko-CONTROL-emulator.EXE");
    facts.portHolder = Fact<PortHolder>::Of({});
    Expect(facts, "server port", Verdict::Ok, "free");
}

TEST(Checkup, Products_AreNamedOrMissed) {
    SystemFacts facts = Healthy();
    Expect(facts, "products", Verdict::Ok, "connected: \"9 12\"");
    facts.connectedProducts = Fact<ServerAnswer>::Of(Answered("0_listconprod_ \r"));
    Expect(facts, "products", Verdict::Problem, "none connected");
    facts.connectedProducts = Fact<ServerAnswer>::Of(Answered("0_listconprod_error 5\r"));
    Expect(facts, "products", Verdict::Problem, "error 5");
    facts.connectedProducts = Fact<ServerAnswer>::Of(Answered("1_listconprod_9\r"));
    Expect(facts, "products", Verdict::Note, "\"9\"");
    facts.connectedProducts = Fact<ServerAnswer>::Of({AnswerKind::Silence, "", 3.0});
    Expect(facts, "products", Verdict::Problem, "does not tell");
}

TEST(Checkup, IncubatorsPort_MustBeKnownAndThere) {
    SystemFacts facts = Healthy();
    Expect(facts, "the incubator's port", Verdict::Ok, "COM3, stored in oko-host.ini");
    facts.serialPorts = Fact<std::vector<int>>::Of({1});
    Expect(facts, "the incubator's port", Verdict::Problem, "no such port now");
    facts.askedPort = 1;
    Expect(facts, "the incubator's port", Verdict::Ok, "COM1, from --port");
    facts.serialPorts = Fact<std::vector<int>>::Of({});
    Expect(facts, "COM ports", Verdict::Problem, "none");
    facts = Healthy();
    facts.settings = {"oko-host.ini", true, {}, ""};
    Expect(facts, "the incubator's port", Verdict::Problem, "oko-host.ini names none");
    facts.settings.found = false;
    Expect(facts, "the incubator's port", Verdict::Problem, "there is no oko-host.ini");
    Expect(facts, "alarm tolerances", Verdict::Note, "none are stored");
}

TEST(Checkup, Switches_AreExplained) {
    SystemFacts facts = Healthy();
    const auto number = [](std::uint32_t value) { return RegistrySwitch{RegistrySwitch::Kind::Number, value}; };
    const RegistrySwitch odd{RegistrySwitch::Kind::OtherType, 0};
    facts.switches = Fact<LibrarySwitches>::Of({number(1), number(0)});
    Expect(facts, "LogCommunication", Verdict::Note, "on:");
    Expect(facts, "ReplyTimeout", Verdict::Note, "waits for ever");
    facts.switches = Fact<LibrarySwitches>::Of({number(2), {}});
    Expect(facts, "LogCommunication", Verdict::Ok, "off");
    Expect(facts, "ReplyTimeout", Verdict::Note, "waits for ever");
    facts.switches = Fact<LibrarySwitches>::Of({odd, odd});
    Expect(facts, "LogCommunication", Verdict::Note, "no REG_DWORD");
    Expect(facts, "ReplyTimeout", Verdict::Note, "no REG_DWORD");
    facts.switches = Fact<LibrarySwitches>::Of({{}, number(1500)});
    Expect(facts, "ReplyTimeout", Verdict::Ok, "1.5 s");
}

TEST(Checkup, WhatOnlyTheIncubatorNeeds_IsNoProblemForTheSimulator) {
    SystemFacts facts = Healthy();
    facts.products = Fact<ServerAnswer>::Of({AnswerKind::Silence, "", 3.0});
    facts.serialPorts = Fact<std::vector<int>>::Of({});
    EXPECT_TRUE(HasProblem(Examine(facts)));
    facts.incubator = false;
    EXPECT_FALSE(HasProblem(Examine(facts)));
    Expect(facts, "COM ports", Verdict::Note, "none");
    facts.library.found = false;
    EXPECT_TRUE(HasProblem(Examine(facts)));
}

TEST(Checkup, WhatIsNotKnownHere_IsANoteThatSaysSo) {
    SystemFacts facts;
    facts.library = Healthy().library;
    facts.settings = Healthy().settings;
    for (const char* const check :
         {"server installed", "server running", "server answer", "server port", "COM ports"}) {
        Expect(facts, check, Verdict::Note, "not known: it was not asked");
    }
    EXPECT_FALSE(HasProblem(Examine(facts)));
}

TEST(CheckupText, Lines_TellWhatToDoBelowWhatNeedsIt) {
    const std::vector<Finding> findings{{"library", Verdict::Ok, "found", ""},
                                        {"COM ports", Verdict::Problem, "there is none", "plug it in"}};
    EXPECT_EQ(CheckupText(findings, "incubator"),
              (std::vector<std::string>{
                  "ok       library    found",
                  "problem  COM ports  there is none",
                  "                    -> plug it in",
                  "1 problem found: begin with the first, others may follow from it",
              }));
    EXPECT_EQ(CheckupText({findings.front()}, "simulator").back(),
              "no problem found; go on with: oko-host monitor --device simulator");
}

TEST(CheckupText, Json_HasEachFinding) {
    const Json json =
        Json::parse(CheckupJson({{"COM ports", Verdict::Problem, "there is none", "plug it in"}}, "incubator"));
    EXPECT_EQ(json, Json::parse(R"({"device":"incubator","problem":true,"findings":[
        {"check":"COM ports","verdict":"problem","fact":"there is none","next":"plug it in"}]})"));
}

TEST(DoctorCommand, OnlyLooks) {
    const HostRun run("doctor --port 3 --device incubator");
    EXPECT_EQ(run.exitCode, 0) << run.output;
    EXPECT_EQ(run.output.find("doctor only looks"), 0U) << run.output;
    EXPECT_NE(run.output.find("Made-up incubator and Made-up simulator"), std::string::npos) << run.output;
    EXPECT_EQ(run.journal, "");
}

TEST(DoctorCommand, ProblemHasItsExitCode) {
    const HostRun noPort("doctor");
    EXPECT_EQ(noPort.exitCode, 16);
    EXPECT_NE(noPort.output.find("1 problem found"), std::string::npos) << noPort.output;
    EXPECT_EQ(HostRun("doctor --device simulator").exitCode, 0);
}

TEST(DoctorCommand, Json_IsAloneOnTheOutput) {
    const HostRun run("doctor --json");
    const Json json = Json::parse(run.output);
    EXPECT_EQ(json["device"], "incubator");
    EXPECT_EQ(json["problem"], true);
    EXPECT_EQ(run.errors.find("doctor only looks"), 0U) << run.errors;
}

}  // namespace
