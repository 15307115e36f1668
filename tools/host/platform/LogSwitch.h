#pragma once

#include <stdexcept>

/// The library's log of its exchanges cannot be switched; the text is for the user.
class LogSwitchError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// Has the library log its exchanges, from the next Init on: sets LogCommunication to 1. What was there comes back with
/// the object's end, and when the program ends at once (EndNow). At most one at a time.
class LogSwitch {
 public:
    /// Throws LogSwitchError.
    LogSwitch();
    ~LogSwitch();  // NOLINT(performance-trivially-destructible): on Windows there is something to put back
    LogSwitch(const LogSwitch&) = delete;
    LogSwitch& operator=(const LogSwitch&) = delete;
};
