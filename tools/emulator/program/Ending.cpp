#include "program/Ending.h"

#include <boost/asio/io_context.hpp>
#include <boost/system/error_code.hpp>
#include <chrono>
#include <csignal>

namespace emulator {

Ending::Ending(boost::asio::io_context& context, double seconds)
    : m_signals(context, SIGINT, SIGTERM), m_timer(context) {
#ifdef SIGBREAK
    m_signals.add(SIGBREAK);  // Ctrl+Break, and a console that is closed
#else
    m_signals.add(SIGHUP);
#endif
    m_signals.async_wait([&context](boost::system::error_code error, int) {
        if (!error) {
            context.stop();
        }
    });
    if (seconds > 0.0) {
        m_timer.expires_after(
            std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds)));
        m_timer.async_wait([&context](boost::system::error_code error) {
            if (!error) {
                context.stop();
            }
        });
    }
}

}  // namespace emulator
