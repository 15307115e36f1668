#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

/// What one or more threads tell another, in order. Any thread.
template <class Message>
class MessageQueue {
 public:
    void Push(Message message) {
        const std::lock_guard lock(m_mutex);
        m_messages.push_back(std::move(message));
        m_arrived.notify_one();
    }

    /// The first message; waits for one, at most until then.
    std::optional<Message> PopUntil(std::chrono::steady_clock::time_point end) {
        std::unique_lock lock(m_mutex);
        if (!m_arrived.wait_until(lock, end, [this] { return !m_messages.empty(); })) {
            return std::nullopt;
        }
        Message message = std::move(m_messages.front());
        m_messages.pop_front();
        return message;
    }

    std::optional<Message> PopFor(double seconds) {
        using std::chrono::steady_clock;
        const auto wait = std::chrono::duration<double>(seconds);
        return PopUntil(steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(wait));
    }

 private:
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<Message> m_messages;
};
