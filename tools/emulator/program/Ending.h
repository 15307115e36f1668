#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>

namespace emulator {

/// Ends a run: stops `context` at Ctrl+C or a request to terminate, and after `seconds` (0: not by time).
class Ending {
 public:
    Ending(boost::asio::io_context& context, double seconds);

 private:
    boost::asio::signal_set m_signals;
    boost::asio::steady_timer m_timer;
};

}  // namespace emulator
