// What a check's process says, what is made of its end, and how it is told.

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "check/CheckLines.h"
#include "check/CheckReport.h"
#include "check/CheckRun.h"
#include "platform/PipedProcess.h"

namespace {

using check::CheckLine;
using check::CheckResult;
using check::CheckVerdict;
namespace word = check::word;

std::vector<CheckLine> Read(const std::vector<std::string>& pieces) {
    std::vector<CheckLine> lines;
    check::CheckLineReader reader([&](const CheckLine& line) { lines.push_back(line); });
    for (const std::string& piece : pieces) {
        reader.Take(piece);
    }
    return lines;
}

constexpr ProcessEnd::Kind kExited = ProcessEnd::Kind::Exited;
constexpr ProcessEnd::Kind kCrashed = ProcessEnd::Kind::Crashed;
constexpr ProcessEnd::Kind kKilled = ProcessEnd::Kind::Killed;

CheckResult Judge(const std::vector<CheckLine>& lines, const ProcessEnd& end, const std::string& box = {}) {
    check::CheckWitness witness;
    for (const CheckLine& line : lines) {
        witness.Take(line);
    }
    if (!box.empty()) {
        witness.SeeBox(box);
    }
    CheckResult result;
    witness.Judge(end, 20.0, result);
    return result;
}

TEST(CheckLinesTests, LinesInAnyPieces_ArriveWholeAndAsTheyWere) {
    const std::string text = check::FormatCheckLine(word::kEnter, "Init") + check::FormatCheckLine(word::kLeave, "");
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        const auto lines = Read({text.substr(0, cut), text.substr(cut)});
        ASSERT_EQ(lines.size(), 2U) << cut;
        EXPECT_EQ(lines[0].word, word::kEnter);
        EXPECT_EQ(lines[0].text, "Init");
        EXPECT_EQ(lines[1].word, word::kLeave);
        EXPECT_EQ(lines[1].text, "");
    }
}

TEST(CheckLinesTests, WhatTheLibraryPrints_IsNoLineAndSpoilsNone) {
    const auto lines = Read({"half a line", check::FormatCheckLine(word::kPassed, ""), "enter Init\r\nmore"});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].word, word::kPassed);
}

TEST(CheckLinesTests, EndsOfLinesInAText_DoNotEndIt) {
    const auto lines = Read({check::FormatCheckLine(word::kFailed, "got \"a\r\nb\"")});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "got \"a  b\"");
}

TEST(CheckLinesTests, LineWithTheOtherSystemsEnd_IsTheSame) {
    std::string text = check::FormatCheckLine(word::kEnter, "Close");
    text.insert(text.size() - 1, "\r");
    const auto lines = Read({text});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].text, "Close");
}

TEST(CheckLinesTests, JoinedTexts_ComeApartAgain) {
    const std::vector<std::string> texts{"rules", "readcurval*; always; code 3"};
    EXPECT_EQ(check::SplitTexts(check::JoinTexts(texts)), texts);
    EXPECT_TRUE(check::SplitTexts("").empty());
}

TEST(CheckWitnessTests, PassedAndExitedWithNothing_HasPassed) {
    EXPECT_EQ(Judge({{word::kEnter, "Init"}, {word::kLeave, ""}, {word::kPassed, ""}}, {kExited, 0, ""}).verdict,
              CheckVerdict::Passed);
}

TEST(CheckWitnessTests, CrashInsideACall_NamesIt) {
    const auto result =
        Judge({{word::kEnter, "Init"}, {word::kLeave, ""}, {word::kEnter, "Close"}}, {kCrashed, 0, "SIGSEGV"});
    EXPECT_EQ(result.verdict, CheckVerdict::Crashed);
    EXPECT_EQ(result.call, "Close");
    EXPECT_EQ(result.reason, "crashed in Close: SIGSEGV");
}

TEST(CheckWitnessTests, CrashBetweenCalls_NamesTheLastOne) {
    EXPECT_EQ(Judge({{word::kEnter, "Close"}, {word::kLeave, ""}}, {kCrashed, 0, "SIGSEGV"}).reason,
              "crashed after Close: SIGSEGV");
    EXPECT_EQ(Judge({}, {kCrashed, 0, "SIGSEGV"}).reason, "crashed before the first call: SIGSEGV");
}

TEST(CheckWitnessTests, CrashAfterThePassedLine_HasCrashed) {
    EXPECT_EQ(
        Judge({{word::kEnter, "FreeLibrary()"}, {word::kLeave, ""}, {word::kPassed, ""}}, {kCrashed, 0, "SIGABRT"})
            .verdict,
        CheckVerdict::Crashed);
}

TEST(CheckWitnessTests, EndWithoutAVerdict_IsACrashWithItsExitCode) {
    const auto result = Judge({{word::kEnter, "Init"}}, {kExited, 3, ""});
    EXPECT_EQ(result.verdict, CheckVerdict::Crashed);
    EXPECT_EQ(result.reason, "ended the process in Init, with exit code 3");
}

TEST(CheckWitnessTests, KilledForItsTime_HungInTheCallAndBehindItsBox) {
    EXPECT_EQ(Judge({{word::kEnter, "Init"}}, {kKilled, 0, ""}).reason, "hung in Init for 20 s");
    EXPECT_EQ(Judge({{word::kEnter, "Init"}}, {kKilled, 0, ""}, "OC Status error.: no").reason,
              "hung in Init for 20 s, behind its box \"OC Status error.: no\"");
    EXPECT_EQ(Judge({{word::kPassed, ""}}, {kKilled, 0, ""}).verdict, CheckVerdict::Hung);
}

TEST(CheckWitnessTests, FirstVerdict_Counts) {
    const auto result = Judge({{word::kFailed, "first"}, {word::kPassed, ""}}, {kCrashed, 0, "SIGSEGV"});
    EXPECT_EQ(result.verdict, CheckVerdict::Failed);
    EXPECT_EQ(result.reason, "first");
}

TEST(CheckReportTests, Junit_EscapesWhatXmlCannotHave) {
    CheckResult result;
    result.name = "read/code-3";
    result.verdict = CheckVerdict::Failed;
    result.reason = "got \"<\x01&\x1B>\" \xFF \xEF\xBF\xBF";
    const std::string xml = check::CheckJunit("a \"library\" & more", {result});
    EXPECT_NE(xml.find("name=\"a &quot;library&quot; &amp; more\""), std::string::npos) << xml;
    EXPECT_NE(xml.find("message=\"got &quot;&lt;\\x01&amp;\\x1B&gt;&quot; \xEF\xBF\xBD \xEF\xBF\xBD\""),
              std::string::npos)
        << xml;
}

TEST(CheckReportTests, Junit_TellsFailuresFromErrorsAndSkips) {
    std::vector<CheckResult> results(4);
    results[1].verdict = CheckVerdict::Failed;
    results[2].verdict = CheckVerdict::Hung;
    results[3].verdict = CheckVerdict::Skipped;
    const std::string xml = check::CheckJunit("x", results);
    EXPECT_NE(xml.find("tests=\"4\" failures=\"1\" errors=\"1\" skipped=\"1\""), std::string::npos) << xml;
    EXPECT_NE(xml.find("<failure "), std::string::npos);
    EXPECT_NE(xml.find("<error "), std::string::npos);
    EXPECT_NE(xml.find("<skipped "), std::string::npos);
}

TEST(CheckReportTests, Counts_NameWhatThereIs) {
    std::vector<CheckResult> results(3);
    results[2].verdict = CheckVerdict::Crashed;
    EXPECT_EQ(check::CheckCounts(results), "3 checks: 2 passed, 1 crashed");
    results.resize(1);
    EXPECT_EQ(check::CheckCounts(results), "1 check: 1 passed");
}

}  // namespace
