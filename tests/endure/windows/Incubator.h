#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "Judgement.h"
#include "endure/windows/Exchanges.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "windows/LoadedLibrary.h"

/// A live channel, as a host works it and as the wire shows it.
struct LiveChannel {
    std::string name;
    std::function<std::int32_t(double*)> readCurrent;
    std::function<std::int32_t(double*)> readTarget;
    std::function<std::int32_t(double)> writeTarget;
    std::string_view currentRefusals;  // payloads that begin with one of these are failures
    std::string_view targetRefusals;
    double lowest;  // targets that no clamp touches
    double highest;
    int decimals;    // of a target on the wire
    bool readsBack;  // a target that was written
    std::string currentCommand;
    std::string targetCommand;  // empty: it has no target
    std::string watchCommand;   // comes before the target's; empty: none
    double rememberedTarget;    // by the device

    /// The command that writes a target.
    std::string WriteCommand(double target) const;
};

/// A command and a reply at most are under way: so many calls, one after the other, and what they gave.
struct Call {
    enum class Kind { Current, Target, Write };
    Kind kind;
    std::size_t channel;
    double given;  // what the host put in: the target, or what stands where a value is to come
    std::int32_t result;
    double value;  // what stands there afterwards
};

/// The host's side: the real device, brought up against an emulator without faults. Emulators come and go; the device
/// does not notice, because nothing is asked meanwhile.
class Incubator {
 public:
    Incubator();
    ~Incubator();
    Incubator(const Incubator&) = delete;
    Incubator& operator=(const Incubator&) = delete;

    CDevApiInterface& Device() const { return m_library.Device(oko::kRealDevice); }
    std::vector<LiveChannel>& Channels() { return m_channels; }

    /// Runs an emulator with these fault rules, lets `work` use the device and gives what went over the wire.
    std::vector<Exchange> With(const std::vector<std::string>& rules, const std::function<void()>& work);

    /// Calls of all kinds to all channels in turn, so that no command follows itself soon.
    std::vector<Call> MakeCalls(int count, const std::string& doing);

    /// How many times a rule of the last emulator fired.
    int Fired() const { return m_fired; }

 private:
    void AddChannels();
    void LearnCommands();

    LoadedLibrary m_library;
    std::vector<LiveChannel> m_channels;
    int m_fired = 0;
    int m_made = 0;  // calls
};

/// Follows calls along the wire: which commands each one sent, and whether it gave what a reply to them allows.
class WireJudge {
 public:
    WireJudge(std::vector<LiveChannel>& channels, const std::vector<Exchange>& exchanges)
        : m_channels(channels), m_exchanges(exchanges) {}

    /// A reply that comes after the time-out, or not at all, is no answer.
    void AllowNoAnswer() { m_bNoAnswerAllowed = true; }

    /// Every call until the first that fails: whatever follows would follow from it.
    void JudgeAll(const std::vector<Call>& calls);

    int Failures() const { return m_failures; }
    int Values() const { return m_values; }

 private:
    void Judge(const Call& call);
    /// Takes the next exchange, which has to be for this command. Gives its index.
    std::size_t Take(const std::string& command);
    bool NextIs(const std::string& command) const;
    std::set<Outcome> Reads(std::size_t index, std::string_view refusals) const;
    std::set<Outcome> Writes(std::size_t index) const;
    void JudgeRead(const Call& call, const std::string& command, std::string_view refusals);
    void JudgeWrite(const Call& call);
    void Expect(const std::set<Outcome>& allowed, const Outcome& seen, const Call& call);

    std::vector<LiveChannel>& m_channels;
    const std::vector<Exchange>& m_exchanges;
    std::size_t m_next = 0;
    bool m_bNoAnswerAllowed = false;
    bool m_bHeld = true;
    int m_failures = 0;
    int m_values = 0;
};
