#include "faults/FaultRule.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "incubator/DeviceFault.h"

namespace emulator {

namespace {

std::string RuleComplaint(const std::string& rule) {
    try {
        ParseFaultRule(rule);
    } catch (const FaultError& error) {
        return error.what();
    }
    return "(none)";
}

TEST(FaultRuleTests, Rule_HasItsPartsAndWhereItCameFrom) {
    const FaultRule rule = ParseFaultRule(" readcurval 9* ;between 1m 90;  late 250 ", "--fault 2");
    EXPECT_EQ(rule.source, " readcurval 9* ;between 1m 90;  late 250 ");
    EXPECT_EQ(rule.origin, "--fault 2");
    EXPECT_EQ(rule.pattern.Text(), "readcurval 9*");
    EXPECT_EQ(rule.trigger.kind, FaultTrigger::Kind::Window);
    EXPECT_EQ(rule.trigger.first, 60.0);
    EXPECT_EQ(rule.trigger.second, 90.0);
    EXPECT_EQ(rule.effect.kind, FaultEffect::Kind::Late);
    EXPECT_EQ(rule.effect.number, 250);
}

TEST(FaultRuleTests, WrongRules_AreExplained) {
    for (const char* const rule :
         {"", "status", "status; always", "status; sometimes; silent", "status; nth; silent", "status; nth 0; silent",
          "status; nth x; silent", "status; between 1; silent", "status; chance; silent", "status; always; explode",
          "status; always; code", "status; always; code -1", "status; always; silent now",
          "status; always 3; silent"}) {
        EXPECT_THROW(ParseFaultRule(rule), FaultError) << rule;
    }
}

TEST(FaultRuleTests, PatternThatNoCommandFits_IsRefusedWithTheReason) {
    struct Case {
        const char* pattern;
        const char* reason;
    };
    for (const Case& row : std::vector<Case>{
             {"", "the pattern is empty: write * for every command"},
             {"raedcurval*",
              "the pattern \"raedcurval*\" fits no command: none begins with \"raedcurval\"; there are "},
             {"foo 9", "the pattern \"foo 9\" fits no command: none is \"foo\"; there are "},
             {"foo", "the pattern \"foo\" fits no command: none is \"foo\"; there are alarm, bl-param-list"},
             {"foo 9*", "the pattern \"foo 9*\" fits no command: none is \"foo\"; there are "},
             {"foo(*", "the pattern \"foo(*\" fits no command: none is \"foo\"; there are "},
             {"readcurval", "the pattern \"readcurval\" fits no command: \"readcurval\" takes 1 to 2 arguments"},
             {"readcurval 1 2 3 4 5",
              "the pattern \"readcurval 1 2 3 4 5\" fits no command: \"readcurval\" takes 1 to 2 arguments"},
             {"readcurval 9 0 0*",
              "the pattern \"readcurval 9 0 0*\" fits no command: \"readcurval\" takes 1 to 2 "
              "arguments"},
             {"status 9", "the pattern \"status 9\" fits no command: \"status\" takes no arguments"},
             {"find", "the pattern \"find\" fits no command: \"find\" takes 1 argument"},
             {"findstat *", "the pattern \"findstat *\" fits no command: \"findstat\" takes no arguments"},
             {"find*1 2 3", "the pattern \"find*1 2 3\" fits no command: \"find\" takes 1 argument"},
         }) {
        EXPECT_EQ(
            RuleComplaint(std::string(row.pattern) + "; always; silent").substr(0, std::string(row.reason).size()),
            row.reason);
    }
}

TEST(FaultRuleTests, PatternThatACommandCanFit_IsTaken) {
    for (const char* const pattern : {"*",
                                      "**",
                                      "read*",
                                      "*cur*",
                                      "r*",
                                      "readcurval*",
                                      "readcurval 9",
                                      "readcurval 9*",
                                      "readcurval 9(0)",
                                      "readcurval 9(0)*",
                                      "readcurval*(1)",
                                      "*(1)",
                                      "readcurval 9(*",
                                      "read*12*",
                                      "start*",
                                      "start 1",
                                      "status",
                                      "status*",
                                      "find*",
                                      "comport 9 0",
                                      "comport 12 1 3",
                                      "comport*",
                                      "writesetpoint 9 0 *",
                                      "* 1 2 3"}) {
        EXPECT_EQ(RuleComplaint(std::string(pattern) + "; always; silent"), "(none)") << pattern;
    }
}

TEST(FaultRuleTests, TriggerThatCannotFire_IsRefusedWithTheReason) {
    struct Case {
        const char* trigger;
        const char* reason;
    };
    for (const Case& row : std::vector<Case>{
             {"between 5 3", "the trigger \"between 5 3\" never fires: the first time must lie before the second"},
             {"between 5 5", "the trigger \"between 5 5\" never fires: the first time must lie before the second"},
             {"between 5 soon", "the trigger \"between\" needs two times: \"soon\" is not a duration"},
             {"between 5", "the trigger \"between\" needs two times: \"\" is not a duration"},
             {"between -1 5", "the trigger \"between\" needs two times: \"-1\" is not a duration"},
             {"chance 2", "the trigger \"chance\" needs a number from 0 to 1, not \"2\""},
             {"chance -0.1", "the trigger \"chance\" needs a number from 0 to 1, not \"-0.1\""},
             {"chance nan", "the trigger \"chance\" needs a number from 0 to 1, not \"nan\""},
             {"nth 2.5", "the trigger \"nth\" needs a whole number from 1 to 1000000000, not \"2.5\""},
             {"nth 1e3", "the trigger \"nth\" needs a whole number from 1 to 1000000000, not \"1e3\""},
             {"every 0", "the trigger \"every\" needs a whole number from 1 to 1000000000, not \"0\""},
             {"every 4294967297",
              "the trigger \"every\" needs a whole number from 1 to 1000000000, not \"4294967297\""},
             {"often", "\"often\" is no trigger; there are: always, nth N"},
         }) {
        EXPECT_EQ(
            RuleComplaint(std::string("*; ") + row.trigger + "; silent").substr(0, std::string(row.reason).size()),
            row.reason);
    }
}

TEST(FaultRuleTests, EffectOnTheDevice_HasTheWordsOfItsFault) {
    const FaultRule rule = ParseFaultRule("readcurval 9*; nth 3; freeze 9 0 for 30");
    EXPECT_EQ(rule.effect.kind, FaultEffect::Kind::Device);
    EXPECT_EQ(rule.effect.device, ParseDeviceFault("freeze 9 0 for 30"));
    EXPECT_EQ(RuleComplaint("*; always; freeze 9"),
              "the effect: the device is missing: write \"freeze PRODUCT DEVICE\"");
    EXPECT_EQ(RuleComplaint("*; always; frezze 9 0").substr(0, 45), "\"frezze 9 0\" is no effect; there are code, er");
}

TEST(FaultRuleTests, EffectBeyondItsLimits_IsRefusedAndNotCut) {
    for (const char* const effect : {"code 0", "code 999", "long 65507", "truncate 65507", "garbage 65507",
                                     "late 60000", "late 0", "error", "value", "echo x"}) {
        EXPECT_EQ(RuleComplaint(std::string("*; always; ") + effect), "(none)") << effect;
    }
    for (const char* const effect : {"code 1000", "code 2.5", "code 2 3", "long 65508", "truncate 65508",
                                     "garbage 65508", "garbage 1e3", "late 60001", "late 4294967297", "late"}) {
        const std::string text = effect;
        const std::string word = text.substr(0, text.find(' '));
        const std::string expected = "the effect \"" + word + "\" needs a whole number from 0 to ";
        EXPECT_EQ(RuleComplaint("*; always; " + text).substr(0, expected.size()), expected);
    }
}

}  // namespace

}  // namespace emulator
