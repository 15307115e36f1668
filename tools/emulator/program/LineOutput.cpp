#include "program/LineOutput.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace emulator {

namespace {

constexpr std::chrono::milliseconds kGather{20};  // so long a line waits for others
constexpr std::chrono::seconds kPatience{1};      // for the reader, at the end

}  // namespace

struct LineOutput::State {
    explicit State(std::function<void(std::string_view)> write, std::size_t most)
        : m_write(std::move(write)), m_most(most) {}

    void Add(std::string_view line, bool urgent) {
        bool wake = false;
        {
            const std::scoped_lock lock(m_mutex);
            if (!urgent && m_lines.size() + line.size() > m_most) {
                ++m_dropped;
                return;
            }
            SayDropped();
            wake = m_lines.empty() || (urgent && !m_urgent);
            m_urgent = m_urgent || urgent;
            m_lines.append(line).append("\n");
        }
        if (wake) {
            m_changed.notify_all();
        }
    }

    void End() {
        std::unique_lock lock(m_mutex);
        SayDropped();
        m_ending = true;
        m_changed.notify_all();
        m_changed.wait_for(lock, kPatience, [this] { return m_ended; });
    }

    void WriteLines() {
        std::string lines;
        std::unique_lock lock(m_mutex);
        while (!m_ending || !m_lines.empty()) {
            m_changed.wait(lock, [this] { return m_ending || !m_lines.empty(); });
            m_changed.wait_for(lock, kGather, [this] { return m_ending || m_urgent; });
            std::swap(lines, m_lines);
            m_urgent = false;
            lock.unlock();
            if (!lines.empty()) {
                m_write(lines);
            }
            lines.clear();
            lock.lock();
        }
        m_ended = true;
        m_changed.notify_all();
    }

 private:
    void SayDropped() {
        if (m_dropped > 0) {
            m_lines += "(" + std::to_string(std::exchange(m_dropped, 0)) +
                       " lines are missing here: they came faster than they could be shown)\n";
        }
    }

    std::function<void(std::string_view)> m_write;
    std::size_t m_most;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::string m_lines;
    std::size_t m_dropped = 0;
    bool m_urgent = false;
    bool m_ending = false;
    bool m_ended = false;
};

LineOutput::LineOutput(std::function<void(std::string_view)> write, std::size_t most)
    : m_state(std::make_shared<State>(std::move(write), most)) {
    std::thread([state = m_state] { state->WriteLines(); }).detach();
}

LineOutput::~LineOutput() { m_state->End(); }

void LineOutput::Say(std::string_view line) { m_state->Add(line, true); }

void LineOutput::Show(std::string_view line) { m_state->Add(line, false); }

void WriteToOutput(std::string_view lines) {
    std::cout.write(lines.data(), static_cast<std::streamsize>(lines.size())).flush();
}

}  // namespace emulator
