#pragma once

#include <chrono>
#include <thread>

/// How long a test waits for what comes at once on a machine that has time: longer than a busy one takes. It is up only
/// where the test has failed.
inline constexpr std::chrono::seconds kPatience{120};

/// Whether it comes to hold.
template <class Condition>
bool Await(const Condition& holds) {
    for (const auto end = std::chrono::steady_clock::now() + kPatience; !holds();) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
