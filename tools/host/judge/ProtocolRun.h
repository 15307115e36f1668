#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "judge/ProtocolPlan.h"
#include "judge/Settling.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "model/Reading.h"
#include "text/Parsed.h"

/// How far a protocol got: what a run needs to go on after a crash.
struct ProtocolProgress {
    struct Hold {
        std::size_t step = 0;               // from 0, as everywhere but in texts
        std::optional<double> heldSeconds;  // since it settled; none: it has not
    };

    std::string fingerprint;    // of the plan
    std::string device;         // its name: progress on the simulator is none on an incubator
    std::int64_t savedMs = 0;   // UTC
    double clockSeconds = 0.0;  // the protocol's own
    std::size_t begun = 0;      // so many steps were begun
    bool done = false;
    std::vector<Hold> holds;
};

std::string ProgressJson(const ProtocolProgress& progress);

/// Refuses what was not written for this plan and this device; the sentence says what to do.
Parsed<ProtocolProgress> ParseProgress(std::string_view text, const ProtocolPlan& plan, const std::string& device);

/// Whether this is the progress of a protocol that came to its end: one that may begin anew.
bool IsOverProgress(std::string_view text);

/// A target to be set now.
struct ProtocolOrder {
    std::size_t step = 0;
    std::size_t channel = 0;
    double value = 0.0;
};

enum class ProtocolState { Running, Done, Failed };

/// Runs a plan: says which target to set when, and waits for what is to settle. Knows no clock and no device; whoever
/// drives it sets the targets and tells what became of them.
///
/// The protocol's clock counts while it is fed, so a run that is taken up again goes on where it was: no condition is
/// left out or cut short by a crash, it only lasts longer. The targets that were in force are set again then, and what
/// had not settled yet has to settle anew.
class ProtocolRun {
 public:
    ProtocolRun(ProtocolPlan plan, std::vector<ChannelInfo> channels);
    ProtocolRun(ProtocolPlan plan, std::vector<ChannelInfo> channels, const ProtocolProgress& progress);

    /// Takes one round's readings, one for each channel; gives the targets to set now. Each order is answered once by
    /// Took or Refused; while no answer comes there is no second one.
    std::vector<ProtocolOrder> Update(const std::vector<Reading>& readings, Moment now);

    /// The device took the target, or what it made of it.
    void Took(const ProtocolOrder& order, double taken);

    /// No answer, or a refusal: it is tried again some times before the protocol fails.
    void Refused(const ProtocolOrder& order, Moment now);

    void Fail(std::string why);

    ProtocolState State() const { return m_state; }
    const std::string& Why() const { return m_why; }  // it failed

    /// What happened since the last call, for people: "step 2: CO2 has settled, and is held for 30 min".
    std::vector<std::string> TakeNotes();

    /// For people: what it waits for.
    std::string Describe() const;

    /// Changes whenever the progress is worth writing at once; the clock alone does not.
    std::uint64_t Revision() const { return m_nRevision; }

    ProtocolProgress Progress(const std::string& device, Moment now) const;

    const ProtocolPlan& Plan() const { return m_plan; }

 private:
    struct Open {  // an order that the device has not taken yet
        ProtocolOrder order;
        int refusals = 0;
        bool asked = false;
        double nextTry = 0.0;  // Moment::seconds
    };
    struct Hold {
        std::size_t step = 0;
        std::optional<double> heldSeconds;
        std::optional<double> taken;  // none: the device has not taken the target yet
        std::optional<Settling> settling;
    };

    const ProtocolPlan::Step& StepOf(const Hold& hold) const { return m_plan.steps[hold.step]; }
    const ChannelInfo& ChannelOf(std::size_t step) const { return m_channels[m_plan.steps[step].channel]; }
    bool IsOrdered(std::size_t step) const;
    void Order(std::size_t step);
    void AdvanceHolds(const std::vector<Reading>& readings, double elapsed, Moment now);
    bool AdvanceHold(Hold& hold, const Reading& reading, double elapsed, Moment now);
    void BeginDueSteps();
    std::vector<ProtocolOrder> Ask(Moment now);
    void Note(std::size_t step, const std::string& text);

    ProtocolPlan m_plan;
    std::vector<ChannelInfo> m_channels;
    ProtocolState m_state = ProtocolState::Running;
    std::string m_why;
    std::vector<std::string> m_notes;
    std::uint64_t m_nRevision = 0;
    double m_clockSeconds = 0.0;
    std::size_t m_begun = 0;
    std::optional<Moment> m_lastRound;
    std::vector<Open> m_open;  // one at most for a channel
    std::vector<Hold> m_holds;
};
