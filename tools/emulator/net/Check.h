#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/udp.hpp>
#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "transcript/Compare.h"
#include "transcript/Transcript.h"

namespace emulator {

struct CheckReport {
    std::size_t exchanges = 0;  // that were compared
    std::size_t all = 0;        // that the transcript has, without what nobody asked for
    std::size_t unasked = 0;    // datagrams of the transcript that nobody asked for
    std::size_t refused = 0;    // commands for which the system said that nobody listens
    std::vector<Difference> differences;
};

/// Each difference with its line, and a count. For people.
std::string FormatCheckReport(const CheckReport& report);

/// Sends a transcript's commands to a server, one after the other, and compares what it answers.
class Check {
 public:
    struct Options {
        boost::asio::ip::udp::endpoint server;
        std::chrono::milliseconds timeout{2000};  // for a reply; longer where the recorded one took long
        std::chrono::milliseconds extra{5};       // in which a datagram too many may come
        bool withPauses = false;                  // as long between the commands as they were recorded
        std::optional<double> tolerance;          // of payloads that are numbers
        std::function<void(const std::vector<Difference>& differences)> onDifferences;  // of one exchange, at once
    };

    /// Calls `onDone` when all are compared or Stop was called.
    Check(boost::asio::io_context& context, std::vector<Exchange> exchanges, Options options,
          std::function<void(const CheckReport& report)> onDone);
    ~Check();
    Check(const Check&) = delete;
    Check& operator=(const Check&) = delete;

    /// Ends at once; the exchange under way is not compared.
    void Stop();

 private:
    class Impl;
    std::shared_ptr<Impl> m_impl;
};

}  // namespace emulator
