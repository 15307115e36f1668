#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace emulator {

/// Lines for a reader that may be slow, or stop reading: a thread of its own writes them in batches, so that the server
/// never waits for it. Any thread.
class LineOutput {
 public:
    /// `write` gets one or more whole lines at a time, on the writing thread; it may take its time. Of lines that are
    /// only shown no more than `most` bytes wait; the rest are dropped, and their number is said.
    explicit LineOutput(std::function<void(std::string_view lines)> write, std::size_t most = kMost);

    /// Writes what still waits, unless `write` takes longer than a second.
    ~LineOutput();
    LineOutput(const LineOutput&) = delete;
    LineOutput& operator=(const LineOutput&) = delete;

    /// A line that somebody waits for: written at once, and never dropped.
    void Say(std::string_view line);

    /// A line of many: written within a moment, with others.
    void Show(std::string_view line);

    static constexpr std::size_t kMost = 4'000'000;

 private:
    struct State;
    std::shared_ptr<State> m_state;  // shared with the thread, which may be stuck in `write` when this is gone
};

/// Writes to the standard output.
void WriteToOutput(std::string_view lines);

}  // namespace emulator
