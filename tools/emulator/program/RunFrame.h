#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <functional>
#include <optional>
#include <string>

#include "program/Ending.h"
#include "program/Input.h"
#include "program/LineOutput.h"
#include "program/Options.h"

namespace emulator {

/// What every run has: the loop that all of it happens on, its output, and what ends it.
class RunFrame {
 public:
    /// `onLine` gets the lines of the standard input, where the options want it read for them.
    explicit RunFrame(const Options& options, std::function<void(const std::string& line)> onLine = {});

    boost::asio::io_context& Context() { return m_context; }
    LineOutput& Output() { return m_output; }

    /// Runs until the program is to end, and calls `onTick` some tens of times a second.
    void Run(std::function<void()> onTick);

    /// Ends the run at its next tick, so that what was just said still goes out.
    void End() { m_over = true; }

    /// Seconds since the program started.
    static double Now();

 private:
    void Tick();

    boost::asio::io_context m_context;
    LineOutput m_output;
    Ending m_ending;
    std::optional<Input> m_input;
    boost::asio::steady_timer m_timer;
    std::function<void()> m_onTick;
    bool m_over = false;
};

}  // namespace emulator
