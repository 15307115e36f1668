#pragma once

#include <boost/asio/io_context.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace emulator {

/// Reads the standard input on a thread of its own and tells of it on the thread that runs `context`: a blocking read
/// is what every system has for pipes, files and consoles alike.
class Input {
 public:
    /// `onLine` gets each line without its end; `onEnd` hears that there are no more. A line that is longer than
    /// kLongestLine comes cut.
    Input(boost::asio::io_context& context, std::function<void(const std::string& line)> onLine,
          std::function<void()> onEnd);

    /// Nothing is told any more. The thread may go on waiting for input; it ends with the program.
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    static constexpr std::size_t kLongestLine = 65'536;

 private:
    struct State;
    std::shared_ptr<State> m_state;
};

}  // namespace emulator
