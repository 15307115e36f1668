#include "faults/Faults.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "faults/FaultRule.h"
#include "incubator/DeviceFault.h"
#include "protocol/Answer.h"

namespace emulator {

namespace {

class FaultsTests : public testing::Test {
 protected:
    /// What goes on the wire for "readcurval 9" under these rules.
    Transmission Send(const std::vector<std::string>& rules, double seconds = 0.0) {
        Faults faults = Make(rules);
        return Send(faults, "readcurval 9", {0, "36.5"}, seconds);
    }

    static Transmission Send(Faults& faults, const std::string& command, const Answer& answer, double seconds) {
        return faults.Transmit(faults.Fire(command, seconds), command, answer);
    }

    Faults Make(const std::vector<std::string>& rules, unsigned seed = 1) {
        Faults faults(seed, [this](const FaultRule& rule, std::string_view command) {
            m_fired.push_back(rule.source + " on " + std::string(command));
        });
        for (const std::string& rule : rules) {
            faults.Add(ParseFaultRule(rule));
        }
        return faults;
    }

    /// On which of `count` commands a rule with this trigger fires: "..x..x".
    std::string Pattern(const std::string& trigger, int count, unsigned seed = 1) {
        Faults faults = Make({"*; " + trigger + "; silent"}, seed);
        std::string pattern;
        for (int i = 0; i < count; ++i) {
            pattern += Send(faults, "status", {0, ""}, i).empty() ? 'x' : '.';
        }
        return pattern;
    }

    std::vector<std::string> m_fired;
};

const std::string kPlain = "0_readcurval 9_36.5\r";

TEST_F(FaultsTests, WithoutRules_RepliesArePlain) {
    const Transmission sent = Send({});
    EXPECT_EQ(sent, (Transmission{{kPlain, 0}}));
    EXPECT_TRUE(m_fired.empty());
}

TEST_F(FaultsTests, EachEffect_DoesWhatItSays) {
    struct Case {
        const char* effect;
        std::vector<std::string> datagrams;
    };
    for (const Case& row : std::vector<Case>{
             {"code 1", {"1_readcurval 9_36.5\r"}},
             {"code 9", {"9_readcurval 9_36.5\r"}},
             {"error no sensor", {"0_readcurval 9_eno sensor\r"}},
             {"error", {"0_readcurval 9_e\r"}},
             {"empty", {""}},
             {"truncate 5", {"0_rea"}},
             {"truncate 500", {kPlain}},
             {"echo readcurval 8", {"0_readcurval 8_36.5\r"}},
             {"no-separator", {"0readcurval 936.5\r"}},
             {"no-return", {"0_readcurval 9_36.5"}},
             {"silent", {}},
             {"twice", {kPlain, kPlain}},
             {"value nan", {"0_readcurval 9_nan\r"}},
             {"value", {"0_readcurval 9_\r"}},
             {"value 999.9", {"0_readcurval 9_999.9\r"}},
         }) {
        EXPECT_EQ(BytesOf(Send({std::string("readcurval*; always; ") + row.effect})), row.datagrams) << row.effect;
    }
    EXPECT_EQ(Send({"*; always; long 100"}).front().bytes.size(), 100U);
    EXPECT_EQ(Send({"*; always; garbage 30"}).front().bytes.size(), 30U);
    EXPECT_EQ(Send({"*; always; late 250"}).front().delayMs, 250);
}

TEST_F(FaultsTests, SeveralRules_WorkTogether) {
    const Transmission sent = Send({"*; always; code 2", "readcurval*; always; value 1", "*; always; twice"});
    EXPECT_EQ(BytesOf(sent), (std::vector<std::string>(2, "2_readcurval 9_1\r")));
    EXPECT_EQ(m_fired.size(), 3U);
    EXPECT_EQ(m_fired.front(), "*; always; code 2 on readcurval 9");
}

TEST_F(FaultsTests, Triggers_FireWhenTheySay) {
    EXPECT_EQ(Pattern("always", 4), "xxxx");
    EXPECT_EQ(Pattern("nth 3", 6), "..x...");
    EXPECT_EQ(Pattern("every 2", 6), ".x.x.x");
    EXPECT_EQ(Pattern("between 2 4", 6), "..xx..");
    EXPECT_EQ(Pattern("chance 0", 20), std::string(20, '.'));
    EXPECT_EQ(Pattern("chance 1", 20), std::string(20, 'x'));
    const std::string chance = Pattern("chance 0.5", 40, 3);
    EXPECT_EQ(chance, Pattern("chance 0.5", 40, 3));
    EXPECT_NE(chance.find('x'), std::string::npos);
    EXPECT_NE(chance.find('.'), std::string::npos);
}

TEST_F(FaultsTests, Nth_CountsOnlyCommandsThatFit) {
    Faults faults = Make({"readcurval*; nth 2; silent"});
    EXPECT_FALSE(Send(faults, "readcurval 9", {}, 0.0).empty());
    EXPECT_FALSE(Send(faults, "status", {}, 0.0).empty());
    EXPECT_TRUE(Send(faults, "readcurval 9", {}, 0.0).empty());
}

TEST_F(FaultsTests, EffectOnTheDevice_LeavesTheReplyAlone) {
    Faults faults = Make({"readcurval*; nth 2; freeze 9 0 for 30"});
    EXPECT_TRUE(faults.Fire("readcurval 9", 0.0).empty());
    const std::vector<FaultEffect> effects = faults.Fire("readcurval 9", 0.0);
    ASSERT_EQ(effects.size(), 1U);
    EXPECT_EQ(effects[0].device, ParseDeviceFault("freeze 9 0 for 30"));
    const Transmission sent = faults.Transmit(effects, "readcurval 9", {0, "36.5"});
    EXPECT_EQ(sent, (Transmission{{kPlain, 0}}));
}

TEST_F(FaultsTests, RulesComeAndGo_UnderNumbersOfTheirOwn) {
    Faults faults(1);
    EXPECT_EQ(faults.Add(ParseFaultRule("status; always; silent", "--fault 1")), 1);
    EXPECT_EQ(faults.Add(ParseFaultRule("status; nth 2; code 2", "my.json/faults/0")), 2);
    EXPECT_EQ(faults.Fire("status", 0.0).size(), 1U);
    EXPECT_TRUE(faults.Remove(1));
    EXPECT_FALSE(faults.Remove(1));
    EXPECT_FALSE(faults.Remove(7));
    EXPECT_EQ(faults.Add(ParseFaultRule("status; always; twice")), 3);
    const std::vector<FaultEffect> effects = faults.Fire("status", 0.0);
    ASSERT_EQ(effects.size(), 2U);
    EXPECT_EQ(effects[0].kind, FaultEffect::Kind::Code);
    EXPECT_EQ(effects[1].kind, FaultEffect::Kind::Twice);

    const std::vector<FaultStatus> list = faults.List();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[0].number, 2);
    EXPECT_EQ(list[0].source, "status; nth 2; code 2");
    EXPECT_EQ(list[0].origin, "my.json/faults/0");
    EXPECT_EQ(list[0].met, 2);
    EXPECT_EQ(list[0].fired, 1);
    EXPECT_EQ(list[1].number, 3);
    EXPECT_EQ(list[1].met, 1);
}

TEST_F(FaultsTests, RulesThatNeverFired_AreToldWithTheReason) {
    Faults faults(1);
    faults.Add(ParseFaultRule("readcurval 8*; always; silent", "--fault 1"));
    faults.Add(ParseFaultRule("status; nth 3; silent", "--fault 2"));
    faults.Add(ParseFaultRule("status; always; code 1", "--fault 3"));
    faults.Add(ParseFaultRule("findstat; always; silent"));
    faults.Add(ParseFaultRule("status; nth 2; silent", "--fault 5"));
    faults.Add(ParseFaultRule("status; nth 1; silent", "--fault 6"));
    faults.Fire("status", 0.0);
    faults.Remove(4);
    faults.Remove(3);
    faults.Remove(5);
    faults.Fire("status", 0.0);
    std::vector<std::string> said;
    for (const FaultStatus& status : faults.NeverFired()) {
        said.push_back(SayNeverFired(status));
    }
    EXPECT_EQ(said,
              (std::vector<std::string>{
                  "--fault 1: \"readcurval 8*; always; silent\" never fired: no command fitted its pattern",
                  "--fault 2: \"status; nth 3; silent\" never fired: its trigger never came for any of the 2 commands "
                  "that fitted its pattern",
                  "\"findstat; always; silent\" never fired: no command fitted its pattern",
                  "--fault 5: \"status; nth 2; silent\" never fired: its trigger never came for any of the 1 command "
                  "that fitted its pattern"}));
}

}  // namespace

}  // namespace emulator
