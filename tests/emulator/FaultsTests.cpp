#include "faults/Faults.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/Answer.h"

namespace emulator {

namespace {

class FaultsTests : public testing::Test {
 protected:
    /// What goes on the wire for "readcurval 9" under these rules.
    Transmission Send(const std::vector<std::string>& rules, double seconds = 0.0) {
        return Make(rules).Apply("readcurval 9", {0, "36.5"}, seconds);
    }

    Faults Make(const std::vector<std::string>& rules, unsigned seed = 1) {
        std::vector<FaultRule> parsed;
        for (const std::string& rule : rules) {
            parsed.push_back(ParseFaultRule(rule));
        }
        return Faults(std::move(parsed), seed, [this](const FaultRule& rule, std::string_view command) {
            m_fired.push_back(rule.source + " on " + std::string(command));
        });
    }

    /// On which of `count` commands a rule with this trigger fires: "..x..x".
    std::string Pattern(const std::string& trigger, int count, unsigned seed = 1) {
        Faults faults = Make({"*; " + trigger + "; silent"}, seed);
        std::string pattern;
        for (int i = 0; i < count; ++i) {
            pattern += faults.Apply("status", {0, ""}, i).empty() ? 'x' : '.';
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
    EXPECT_FALSE(faults.Apply("readcurval 9", {}, 0.0).empty());
    EXPECT_FALSE(faults.Apply("status", {}, 0.0).empty());
    EXPECT_TRUE(faults.Apply("readcurval 9", {}, 0.0).empty());
}

TEST_F(FaultsTests, Patterns_FitWholeCommands) {
    EXPECT_TRUE(FitsPattern("readcurval 9", "readcurval 9"));
    EXPECT_FALSE(FitsPattern("readcurval 9(0)", "readcurval 9"));
    EXPECT_TRUE(FitsPattern("readcurval 9(0)", "readcurval 9*"));
    EXPECT_TRUE(FitsPattern("readcurval 12(1)", "*(1)"));
    EXPECT_TRUE(FitsPattern("readcurval 12(1)", "read*12*"));
    EXPECT_TRUE(FitsPattern("", "*"));
    EXPECT_TRUE(FitsPattern("", ""));
    EXPECT_FALSE(FitsPattern("", "x"));
}

TEST_F(FaultsTests, WrongRules_AreExplained) {
    for (const char* const rule :
         {"", "status", "status; always", "status; sometimes; silent", "status; nth; silent", "status; nth 0; silent",
          "status; nth x; silent", "status; between 1; silent", "status; chance; silent", "status; always; explode",
          "status; always; code", "status; always; code -1", "status; always; silent now",
          "status; always 3; silent"}) {
        EXPECT_THROW(ParseFaultRule(rule), FaultError) << rule;
    }
}

}  // namespace

}  // namespace emulator
