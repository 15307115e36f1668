#include "program/Input.h"

#include <array>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/ReadInput.h"

namespace emulator {

struct Input::State : std::enable_shared_from_this<Input::State> {
    std::mutex m_mutex;
    boost::asio::io_context* m_context = nullptr;  // none: nobody listens any more
    std::function<void(const std::string&)> m_onLine;
    std::function<void()> m_onEnd;

    /// Has `tell` called on the listener's thread, if there still is one when it comes to it.
    void Post(std::function<void()> tell) {
        const std::scoped_lock lock(m_mutex);
        if (m_context != nullptr) {
            boost::asio::post(*m_context, [self = shared_from_this(), tell = std::move(tell)] {
                if (self->m_context != nullptr) {
                    tell();
                }
            });
        }
    }

    void Take(std::string& line) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        Post([this, line] { m_onLine(line); });
        line.clear();
    }

    void ReadLines() {
        std::array<char, 4096> buffer;
        std::string line;
        while (const std::size_t length = ReadInput(buffer.data(), buffer.size())) {
            for (const char c : std::string_view(buffer.data(), length)) {
                if (c == '\n') {
                    Take(line);
                } else if (line.size() < kLongestLine) {
                    line.push_back(c);
                }
            }
        }
        if (!line.empty()) {
            Take(line);
        }
        Post([this] { m_onEnd(); });
    }
};

Input::Input(boost::asio::io_context& context, std::function<void(const std::string&)> onLine,
             std::function<void()> onEnd)
    : m_state(std::make_shared<State>()) {
    m_state->m_context = &context;
    m_state->m_onLine = std::move(onLine);
    m_state->m_onEnd = std::move(onEnd);
    std::thread([state = m_state] { state->ReadLines(); }).detach();
}

Input::~Input() {
    const std::scoped_lock lock(m_state->m_mutex);
    m_state->m_context = nullptr;
}

}  // namespace emulator
