#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "protocol/Answer.h"
#include "transcript/Transcript.h"

namespace emulator {

/// What a command gets that the record does not have.
enum class MissingReply { Refuse, Silent, Model };

enum class ReplayTiming { AtOnce, Recorded };

struct ReplayOptions {
    ReplayTiming timing = ReplayTiming::AtOnce;
    MissingReply missing = MissingReply::Refuse;
    std::function<Answer(const std::string& command)> model;    // asked where `missing` is Model
    std::function<void(const std::string& command)> onMissing;  // once for each unknown command
};

/// Answers from a record: each command with the replies that it got, in turn; the last ones stay.
class Replay {
 public:
    /// What nobody asked for is left out of it.
    Replay(const std::vector<Exchange>& exchanges, ReplayOptions options);

    Transmission Answer(const std::string& command);

 private:
    struct Turns {
        std::vector<Transmission> replies;
        std::size_t next = 0;
    };

    Transmission AnswerMissing(const std::string& command);

    ReplayOptions m_options;
    std::map<std::string, Turns> m_turns;
    std::set<std::string> m_warned;
};

}  // namespace emulator
