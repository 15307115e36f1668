#include "judge/ProtocolRun.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "judge/Band.h"
#include "judge/Describe.h"
#include "judge/ProtocolPlan.h"
#include "judge/Settling.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "text/Duration.h"

namespace {

// A server that is busy or restarting is back within this minute.
constexpr int kTries = 7;
constexpr double kRetrySeconds = 10.0;

std::string StepText(std::size_t step, const std::string& text) {
    return "step " + std::to_string(step + 1) + ": " + text;
}

}  // namespace

ProtocolRun::ProtocolRun(ProtocolPlan plan, std::vector<ChannelInfo> channels)
    : m_plan(std::move(plan)), m_channels(std::move(channels)) {}

ProtocolRun::ProtocolRun(ProtocolPlan plan, std::vector<ChannelInfo> channels, const ProtocolProgress& progress)
    : ProtocolRun(std::move(plan), std::move(channels)) {
    m_clockSeconds = progress.clockSeconds;
    m_begun = progress.begun;
    m_state = progress.done ? ProtocolState::Done : ProtocolState::Running;
    for (std::size_t step = 0; step < m_begun; ++step) {
        Order(step);
    }
    for (const ProtocolProgress::Hold& hold : progress.holds) {
        m_holds.push_back({hold.step, hold.heldSeconds, std::nullopt, std::nullopt});
    }
}

std::vector<ProtocolOrder> ProtocolRun::Update(const std::vector<Reading>& readings, Moment now) {
    if (m_state != ProtocolState::Running) {
        return {};
    }
    const double elapsed = m_lastRound ? now.seconds - m_lastRound->seconds : 0.0;
    m_lastRound = now;
    if (m_holds.empty()) {
        m_clockSeconds += elapsed;
    } else {
        AdvanceHolds(readings, elapsed, now);
    }
    if (m_state != ProtocolState::Running) {
        return {};
    }
    BeginDueSteps();
    if (m_begun == m_plan.steps.size() && m_holds.empty() && m_open.empty()) {
        m_state = ProtocolState::Done;
        ++m_nRevision;
    }
    return Ask(now);
}

void ProtocolRun::AdvanceHolds(const std::vector<Reading>& readings, double elapsed, Moment now) {
    std::erase_if(m_holds,
                  [&](Hold& hold) { return AdvanceHold(hold, readings.at(StepOf(hold).channel), elapsed, now); });
}

/// True when it was held for long enough.
bool ProtocolRun::AdvanceHold(Hold& hold, const Reading& reading, double elapsed, Moment now) {
    if (!hold.taken) {
        return false;
    }
    const double wanted = StepOf(hold).holdSeconds.value_or(0.0);
    const ChannelInfo& channel = ChannelOf(hold.step);
    if (hold.heldSeconds) {
        *hold.heldSeconds += elapsed;
    } else {
        if (!hold.settling) {
            hold.settling.emplace(m_plan.settleSeconds, m_plan.withinSeconds, now);
        }
        const SettlingState state = hold.settling->Update(reading.current, BandAround(*hold.taken, channel), now);
        if (state == SettlingState::GivenUp) {
            Fail(StepText(hold.step, channel.key + " has not settled within " +
                                         FormatDuration(m_plan.withinSeconds.value_or(0.0)) + ": " +
                                         hold.settling->Describe(channel)));
        }
        if (state != SettlingState::Settled) {
            return false;
        }
        hold.heldSeconds = 0.0;
        Note(hold.step,
             channel.key + " has settled" + (wanted > 0.0 ? ", and is held for " + FormatDuration(wanted) : ""));
    }
    if (*hold.heldSeconds < wanted) {
        return false;
    }
    Note(hold.step, channel.key + " was held");
    return true;
}

/// A hold that begins keeps the later steps back, but not those of its own time.
void ProtocolRun::BeginDueSteps() {
    while (m_holds.empty() && m_begun < m_plan.steps.size() && m_plan.steps[m_begun].atSeconds <= m_clockSeconds) {
        const double at = m_plan.steps[m_begun].atSeconds;
        for (; m_begun < m_plan.steps.size() && m_plan.steps[m_begun].atSeconds == at; ++m_begun) {
            Order(m_begun);
            if (m_plan.steps[m_begun].holdSeconds) {
                m_holds.push_back({m_begun, std::nullopt, std::nullopt, std::nullopt});
            }
            Note(m_begun, ChannelOf(m_begun).key + " is to go to " +
                              DescribeValue(ChannelOf(m_begun), m_plan.steps[m_begun].value));
        }
    }
}

/// A later order for a channel takes the place of one that the device has not taken.
void ProtocolRun::Order(std::size_t step) {
    const ProtocolPlan::Step& planned = m_plan.steps[step];
    std::erase_if(m_open, [&](const Open& open) { return open.order.channel == planned.channel; });
    m_open.push_back({{step, planned.channel, planned.value}, 0, false, 0.0});
}

std::vector<ProtocolOrder> ProtocolRun::Ask(Moment now) {
    std::vector<ProtocolOrder> orders;
    for (Open& open : m_open) {
        if (!open.asked && now.seconds >= open.nextTry) {
            open.asked = true;
            orders.push_back(open.order);
        }
    }
    return orders;
}

void ProtocolRun::Took(const ProtocolOrder& order, double taken) {
    std::erase_if(m_open, [&](const Open& open) { return open.order.step == order.step; });
    for (Hold& hold : m_holds) {
        if (hold.step == order.step) {
            hold.taken = taken;
        }
    }
}

void ProtocolRun::Refused(const ProtocolOrder& order, Moment now) {
    for (Open& open : m_open) {
        if (open.order.step != order.step) {
            continue;
        }
        open.asked = false;
        open.nextTry = now.seconds + kRetrySeconds;
        if (++open.refusals >= kTries) {
            Fail(StepText(order.step, ChannelOf(order.step).key + " did not take its target, " +
                                          std::to_string(kTries) + " times"));
            return;
        }
    }
}

void ProtocolRun::Fail(std::string why) {
    if (m_state == ProtocolState::Running) {
        m_state = ProtocolState::Failed;
        m_why = std::move(why);
        ++m_nRevision;
    }
}

std::vector<std::string> ProtocolRun::TakeNotes() { return std::exchange(m_notes, {}); }

void ProtocolRun::Note(std::size_t step, const std::string& text) {
    m_notes.push_back(StepText(step, text));
    ++m_nRevision;
}

std::string ProtocolRun::Describe() const {
    if (m_state != ProtocolState::Running) {
        return m_state == ProtocolState::Done ? "the protocol is over" : m_why;
    }
    if (!m_holds.empty()) {
        const Hold& hold = m_holds.front();
        const ChannelInfo& channel = ChannelOf(hold.step);
        if (hold.heldSeconds) {
            return StepText(hold.step, channel.key + " is held for another " +
                                           FormatDuration(StepOf(hold).holdSeconds.value_or(0.0) - *hold.heldSeconds));
        }
        return StepText(hold.step, "waits until " + channel.key + " has settled" +
                                       (hold.settling ? "; " + hold.settling->Describe(channel) : ""));
    }
    if (m_begun < m_plan.steps.size()) {
        return StepText(m_begun, "begins in " + FormatDuration(m_plan.steps[m_begun].atSeconds - m_clockSeconds));
    }
    return "waits until the device has taken the last target";
}

ProtocolProgress ProtocolRun::Progress(const std::string& device, Moment now) const {
    ProtocolProgress progress{
        m_plan.fingerprint, device, now.utcMs, m_clockSeconds, m_begun, m_state == ProtocolState::Done, {}};
    for (const Hold& hold : m_holds) {
        progress.holds.push_back({hold.step, hold.heldSeconds});
    }
    return progress;
}
