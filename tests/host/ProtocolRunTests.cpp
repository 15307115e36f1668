// How a protocol runs, with a clock and a device that the test makes up.

#include "judge/ProtocolRun.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "judge/ProtocolPlan.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"

namespace {

std::vector<ChannelInfo> Channels() {
    return {{ChannelKind::Temperature, 0, "T", "T", true, 20.0, 60.0, 0.2, 0.2},
            {ChannelKind::Gas, 0, "CO2", "CO2", true, 0.0, 20.0, 0.5, 0.5}};
}

ProtocolPlan PlanOf(const std::string& steps, const std::string& more = "") {
    const auto text = ParseProtocol("{" + more + "\"steps\": [" + steps + "]}");
    EXPECT_TRUE(text) << text.error;
    const auto plan = ResolveProtocol(*text, Channels());
    EXPECT_TRUE(plan) << plan.error;
    return *plan;
}

constexpr const char* kTwoSteps = R"({"at": "0s", "channel": "T", "value": 37},
                                     {"at": "10s", "channel": "CO2", "value": 5})";
constexpr const char* kHold = R"({"at": "0s", "channel": "CO2", "value": 5, "hold": "30s"},
                                 {"at": "10s", "channel": "CO2", "value": 1})";

/// A device that takes each target at once, and whose values the test sets.
class Bench {
 public:
    explicit Bench(ProtocolPlan plan) : m_run(std::move(plan), Channels()) {}
    Bench(ProtocolPlan plan, const ProtocolProgress& progress) : m_run(std::move(plan), Channels(), progress) {}

    /// One round: "T=37 CO2=5", the targets that were ordered.
    std::string Round(double seconds) {
        now = {1000, 50.0 + seconds};
        std::string asked;
        for (const ProtocolOrder& order : m_run.Update({{t, {}, {}, false}, {co2, {}, {}, false}}, now)) {
            asked += (asked.empty() ? "" : " ") + Channels()[order.channel].key + "=" +
                     std::to_string(static_cast<int>(order.value));
            if (answers) {
                m_run.Took(order, order.value + drift);
            }
            orders.push_back(order);
        }
        return asked;
    }
    ProtocolRun& Run() { return m_run; }

    std::optional<double> t = 37.0;
    std::optional<double> co2 = 0.0;
    double drift = 0.0;  // what the device makes of a target
    bool answers = true;
    Moment now;
    std::vector<ProtocolOrder> orders;

 private:
    ProtocolRun m_run;
};

TEST(ProtocolRun, SetsEachTargetAtItsTimeOnce) {
    Bench bench(PlanOf(kTwoSteps));
    EXPECT_EQ(bench.Round(0), "T=37");
    EXPECT_EQ(bench.Round(5), "");
    EXPECT_EQ(bench.Run().Describe(), "step 2: begins in 5 s");
    EXPECT_EQ(bench.Round(9.9), "");
    EXPECT_EQ(bench.Round(10), "CO2=5");
    EXPECT_EQ(bench.Run().State(), ProtocolState::Running);
    EXPECT_EQ(bench.Round(11), "");
    EXPECT_EQ(bench.Run().State(), ProtocolState::Done);
    EXPECT_EQ(bench.Run().Describe(), "the protocol is over");
    EXPECT_EQ(bench.Run().TakeNotes(),
              (std::vector<std::string>{"step 1: T is to go to 37.00 \u00B0C", "step 2: CO2 is to go to 5.00 %"}));
    EXPECT_TRUE(bench.Run().TakeNotes().empty());
}

TEST(ProtocolRun, FirstStepMayWait) {
    Bench bench(PlanOf(R"({"at": "10s", "channel": "CO2", "value": 5})"));
    EXPECT_EQ(bench.Round(0), "");
    EXPECT_EQ(bench.Round(10), "CO2=5");
}

TEST(ProtocolRun, LateRoundSetsWhatIsDueAndOfAChannelOnlyTheLast) {
    Bench bench(PlanOf(R"({"at": "0s", "channel": "T", "value": 37}, {"at": "10s", "channel": "CO2", "value": 5},
                          {"at": "20s", "channel": "CO2", "value": 7}, {"at": "40s", "channel": "CO2", "value": 9})"));
    EXPECT_EQ(bench.Round(0), "T=37");
    EXPECT_EQ(bench.Round(30), "CO2=7");
    EXPECT_EQ(bench.Round(40), "CO2=9");
}

TEST(ProtocolRun, ClockStandsStillWhileAStepSettlesAndIsHeld) {
    Bench bench(PlanOf(kHold));
    EXPECT_EQ(bench.Round(0), "CO2=5");
    EXPECT_EQ(bench.Round(1000), "");
    EXPECT_EQ(bench.Run().Describe(), "step 1: waits until CO2 has settled; CO2 is 0.00 %, below 4.50 %");
    bench.co2 = 4.6;
    EXPECT_EQ(bench.Round(1001), "");
    EXPECT_EQ(bench.Round(1060.9), "");
    bench.Run().TakeNotes();
    EXPECT_EQ(bench.Round(1061), "");
    EXPECT_EQ(bench.Run().TakeNotes(), (std::vector<std::string>{"step 1: CO2 has settled, and is held for 30 s"}));
    EXPECT_EQ(bench.Round(1071), "");
    EXPECT_EQ(bench.Run().Describe(), "step 1: CO2 is held for another 20 s");
    EXPECT_EQ(bench.Round(1091), "");
    EXPECT_EQ(bench.Run().TakeNotes(), (std::vector<std::string>{"step 1: CO2 was held"}));
    EXPECT_EQ(bench.Run().Describe(), "step 2: begins in 10 s");
    EXPECT_EQ(bench.Round(1100.9), "");
    EXPECT_EQ(bench.Round(1101), "CO2=1");
}

TEST(ProtocolRun, StrayingWhileHeldDoesNotStartAnew) {
    Bench bench(PlanOf(kHold));
    bench.co2 = 5.0;
    bench.Round(0);
    bench.Round(1);
    bench.Round(61);
    bench.co2.reset();
    bench.Round(80);
    bench.Round(91);
    EXPECT_EQ(bench.Round(101), "CO2=1");
}

TEST(ProtocolRun, MissingDataDoesNotSettle) {
    Bench bench(PlanOf(kHold));
    bench.co2 = 5.0;
    bench.Round(0);
    bench.Round(1);
    bench.co2.reset();
    bench.Round(30);
    bench.co2 = 5.0;
    bench.Round(31);
    bench.Round(90);
    EXPECT_EQ(bench.Run().Describe(),
              "step 1: waits until CO2 has settled; CO2 is 5.00 %, within 4.50 to 5.50 %, for 59 s of 1 min");
}

TEST(ProtocolRun, StepsOfOneTimeAreSetTogetherAndAllHolds) {
    Bench bench(PlanOf(
        R"({"at": 0, "channel": "CO2", "value": 5, "hold": 100}, {"at": 0, "channel": "T", "value": 37, "hold": 10},
                          {"at": 0.5, "channel": "T", "value": 38})",
        R"("settle": 0, )"));
    bench.co2 = 5.0;
    EXPECT_EQ(bench.Round(0), "CO2=5 T=37");
    EXPECT_EQ(bench.Round(1), "");
    EXPECT_EQ(bench.Round(100.9), "");
    EXPECT_EQ(bench.Round(101), "");
    EXPECT_EQ(bench.Round(101.5), "T=38");
}

TEST(ProtocolRun, LastHoldIsPartOfTheProtocol) {
    Bench bench(PlanOf(R"({"at": 0, "channel": "CO2", "value": 5, "hold": 30})", R"("settle": 0, )"));
    bench.co2 = 5.0;
    bench.Round(0);
    bench.Round(1);
    bench.Round(30.9);
    EXPECT_EQ(bench.Run().State(), ProtocolState::Running);
    bench.Round(31);
    EXPECT_EQ(bench.Run().State(), ProtocolState::Done);
}

TEST(ProtocolRun, SettlesAroundWhatTheDeviceTook) {
    Bench bench(PlanOf(kHold, R"("settle": 0, )"));
    bench.drift = 0.4;
    bench.co2 = 5.8;
    bench.Round(0);
    bench.Round(1);
    EXPECT_EQ(bench.Run().Describe(), "step 1: CO2 is held for another 30 s");
}

TEST(ProtocolRun, WhatDoesNotSettleInTimeEndsIt) {
    Bench bench(PlanOf(kHold, R"("within": "2m", )"));
    bench.Round(0);
    bench.Round(1);
    EXPECT_EQ(bench.Round(120.9), "");
    EXPECT_EQ(bench.Run().State(), ProtocolState::Running);
    EXPECT_EQ(bench.Round(121), "");
    EXPECT_EQ(bench.Run().State(), ProtocolState::Failed);
    EXPECT_EQ(bench.Run().Why(), "step 1: CO2 has not settled within 2 min: CO2 is 0.00 %, below 4.50 %");
    bench.co2 = 5.0;
    EXPECT_EQ(bench.Round(1000), "");
    EXPECT_EQ(bench.Run().State(), ProtocolState::Failed);
}

TEST(ProtocolRun, UnansweredOrderIsNotRepeatedAndHoldsWaitForIt) {
    Bench bench(PlanOf(kHold, R"("settle": 0, )"));
    bench.answers = false;
    bench.co2 = 5.0;
    EXPECT_EQ(bench.Round(0), "CO2=5");
    EXPECT_EQ(bench.Round(500), "");
    EXPECT_EQ(bench.Run().Describe(), "step 1: waits until CO2 has settled");
    bench.Run().Took(bench.orders[0], 5.0);
    EXPECT_EQ(bench.Round(501), "");
    EXPECT_EQ(bench.Run().Describe(), "step 1: CO2 is held for another 30 s");
}

TEST(ProtocolRun, RefusedOrderIsTriedAgainForAMinute) {
    Bench bench(PlanOf(kTwoSteps));
    bench.answers = false;
    EXPECT_EQ(bench.Round(0), "T=37");
    for (int i = 1; i < 7; ++i) {
        bench.Run().Refused(bench.orders.back(), bench.now);
        EXPECT_EQ(bench.Round(10 * i - 0.1).find("T="), std::string::npos);
        EXPECT_NE(bench.Round(10 * i).find("T="), std::string::npos) << i;
        EXPECT_EQ(bench.Run().State(), ProtocolState::Running);
        bench.orders.push_back(bench.orders.front());
    }
    bench.Run().Refused(bench.orders.back(), bench.now);
    EXPECT_EQ(bench.Run().State(), ProtocolState::Failed);
    EXPECT_EQ(bench.Run().Why(), "step 1: T did not take its target, 7 times");
}

TEST(ProtocolRun, AnswerToAnOrderThatALaterStepReplacedIsNoAnswerToThat) {
    Bench bench(PlanOf(R"({"at": 0, "channel": "CO2", "value": 5}, {"at": 10, "channel": "CO2", "value": 7})"));
    bench.answers = false;
    bench.Round(0);
    EXPECT_EQ(bench.Round(10), "CO2=7");
    bench.Run().Took(bench.orders[0], 5.0);
    bench.Round(11);
    EXPECT_EQ(bench.Run().State(), ProtocolState::Running);
    EXPECT_EQ(bench.Run().Describe(), "waits until the device has taken the last target");
    bench.Run().Took(bench.orders[1], 7.0);
    bench.Round(12);
    EXPECT_EQ(bench.Run().State(), ProtocolState::Done);
}

TEST(ProtocolRun, WhoeverDrivesItMayEndIt) {
    Bench bench(PlanOf(kTwoSteps));
    bench.Round(0);
    bench.Run().Fail("CO2: asked 5, the device took 3");
    EXPECT_EQ(bench.Run().State(), ProtocolState::Failed);
    EXPECT_EQ(bench.Run().Describe(), "CO2: asked 5, the device took 3");
    bench.Run().Fail("another reason");
    EXPECT_EQ(bench.Run().Why(), "CO2: asked 5, the device took 3");
}

TEST(ProtocolRun, RevisionTellsWhenTheProgressIsWorthWriting) {
    Bench bench(PlanOf(kTwoSteps));
    const auto fresh = bench.Run().Revision();
    bench.Round(0);
    const auto begun = bench.Run().Revision();
    EXPECT_NE(begun, fresh);
    bench.Round(5);
    EXPECT_EQ(bench.Run().Revision(), begun);
    bench.Round(10);
    const auto second = bench.Run().Revision();
    EXPECT_NE(second, begun);
    bench.Round(11);
    EXPECT_NE(bench.Run().Revision(), second);
}

ProtocolProgress Saved(Bench& bench, const ProtocolPlan& plan) {
    const auto read = ParseProgress(ProgressJson(bench.Run().Progress("Simulator", bench.now)), plan, "Simulator");
    EXPECT_TRUE(read) << read.error;
    return read.value.value_or(ProtocolProgress{});
}

TEST(ProtocolResume, ClockGoesOnWhereItWasAndTargetsAreSetAgain) {
    const auto plan = PlanOf(R"({"at": 0, "channel": "T", "value": 37}, {"at": 0, "channel": "CO2", "value": 5},
                                {"at": 10, "channel": "CO2", "value": 7}, {"at": 100, "channel": "T", "value": 38})");
    Bench before(plan);
    before.Round(0);
    before.Round(40);
    const ProtocolProgress progress = Saved(before, plan);
    EXPECT_EQ(progress.clockSeconds, 40.0);
    EXPECT_EQ(progress.begun, 3U);
    EXPECT_EQ(progress.savedMs, 1000);

    Bench after(plan, progress);
    EXPECT_EQ(after.Round(0), "T=37 CO2=7");
    EXPECT_EQ(after.Round(59.9), "");
    EXPECT_EQ(after.Round(60), "T=38");
}

TEST(ProtocolResume, WhatHadNotSettledSettlesAnew) {
    const auto plan = PlanOf(kHold);
    Bench before(plan);
    before.co2 = 5.0;
    before.Round(0);
    before.Round(1);
    before.Round(50);
    Bench after(plan, Saved(before, plan));
    after.co2 = 5.0;
    EXPECT_EQ(after.Round(0), "CO2=5");
    after.Round(1);
    after.Round(60.9);
    EXPECT_EQ(after.Run().Describe(),
              "step 1: waits until CO2 has settled; CO2 is 5.00 %, within 4.50 to 5.50 %, for 59 s of 1 min");
    after.Round(61);
    EXPECT_EQ(after.Run().Describe(), "step 1: CO2 is held for another 30 s");
}

TEST(ProtocolResume, WhatWasHeldIsHeldForTheRest) {
    const auto plan = PlanOf(kHold);
    Bench before(plan);
    before.co2 = 5.0;
    before.Round(0);
    before.Round(1);
    before.Round(61);
    before.Round(81);
    Bench after(plan, Saved(before, plan));
    EXPECT_EQ(after.Round(0), "CO2=5");
    after.Round(10);
    EXPECT_EQ(after.Run().Describe(), "step 2: begins in 10 s");
    EXPECT_EQ(after.Round(20), "CO2=1");
}

TEST(ProtocolResume, FailedRunMayGoOn) {
    const auto plan = PlanOf(kHold, R"("within": "2m", )");
    Bench before(plan);
    before.Round(0);
    before.Round(1);
    before.Round(121);
    ASSERT_EQ(before.Run().State(), ProtocolState::Failed);
    Bench after(plan, Saved(before, plan));
    EXPECT_EQ(after.Round(0), "CO2=5");
    EXPECT_EQ(after.Run().State(), ProtocolState::Running);
}

TEST(ProtocolResume, ChangedProtocolAndOtherDeviceAreRefused) {
    const auto plan = PlanOf(kHold);
    Bench bench(plan);
    bench.Round(0);
    const std::string json = ProgressJson(bench.Run().Progress("Simulator", bench.now));
    EXPECT_EQ(
        ParseProgress(json, PlanOf(kTwoSteps), "Simulator").error,
        "the protocol was changed since it was begun: put it back as it was, or delete its progress to begin anew");
    EXPECT_EQ(ParseProgress(json, plan, "Incubator").error,
              "the protocol was begun on \"Simulator\": go on there, or delete its progress to begin anew");
}

TEST(ProtocolResume, ProtocolThatIsOverIsRefused) {
    const auto plan = PlanOf(kTwoSteps);
    Bench bench(plan);
    bench.Round(0);
    bench.Round(10);
    bench.Round(11);
    const std::string json = ProgressJson(bench.Run().Progress("S", bench.now));
    EXPECT_EQ(ParseProgress(json, plan, "S").error, "the protocol is over: delete its progress to begin anew");
    EXPECT_TRUE(IsOverProgress(json));
    for (const char* text : {"", "[]", "{}", "{\"done\": 1}", "{\"done\": false}"}) {
        EXPECT_FALSE(IsOverProgress(text)) << text;
    }
}

TEST(ProtocolResume, ProgressThatSomethingElseWroteIsRefused) {
    const auto plan = PlanOf(kHold);
    const auto json = [&](const std::string& rest) {
        return R"({"fingerprint": ")" + plan.fingerprint + R"(", "device": "S", "savedMs": 0, "done": false, )" + rest +
               "}";
    };
    const std::string unfit = "the progress does not fit the protocol: delete its file to begin anew";
    const std::string unread = "the progress cannot be read: delete its file to begin anew";
    const std::vector<std::pair<std::string, std::string>> cases{
        {json(R"("clockSeconds": 0, "stepsBegun": 1, "holds": [{"step": 1, "heldSeconds": null}])"), ""},
        {json(R"("clockSeconds": 0, "stepsBegun": 3, "holds": [])"), unfit},
        {json(R"("clockSeconds": -1, "stepsBegun": 1, "holds": [])"), unfit},
        {json(R"("clockSeconds": 0, "stepsBegun": 1, "holds": [{"step": 2, "heldSeconds": null}])"), unfit},
        {json(R"("clockSeconds": 0, "stepsBegun": 2, "holds": [{"step": 2, "heldSeconds": null}])"), unfit},
        {json(R"("clockSeconds": 0, "stepsBegun": 2, "holds": [{"step": 0, "heldSeconds": null}])"), unfit},
        {json(R"("clockSeconds": 0, "stepsBegun": 1, "holds": [{"step": 1, "heldSeconds": -1}])"), unfit},
        {json(
             R"("clockSeconds": 0, "stepsBegun": 1, "holds": [{"step": 1, "heldSeconds": 1}, {"step": 1, "heldSeconds": 1}])"),
         unfit},
        {json(R"("clockSeconds": "x", "stepsBegun": 1, "holds": [])"), unread},
        {json(R"("clockSeconds": 0, "holds": [])"), unread},
        {"", unread},
        {"[]", unread},
        {"{\"fingerprint\": 1}", unread}};
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(ParseProgress(text, plan, "S").error, error) << text;
    }
}

}  // namespace
