#pragma once

#include <functional>
#include <memory>
#include <string>

/// Whether this system has windows and message queues.
bool HasWindows() noexcept;

/// Looks for message boxes and dialogs that stand in this process, on a thread of its own while it lives. Where a
/// system has none there is nothing to see.
class BoxWatch {
 public:
    /// `onBox` hears of each, "TITLE: TEXT", once. With `answers` it is closed as by its close box.
    BoxWatch(std::function<void(const std::string& box)> onBox, bool answers);
    ~BoxWatch();
    BoxWatch(const BoxWatch&) = delete;
    BoxWatch& operator=(const BoxWatch&) = delete;

 private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};
