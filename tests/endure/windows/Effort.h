#pragma once

/// How much of everything is done.
struct Effort {
    int faultCalls;     // against each fault of its own
    int togetherCalls;  // against all faults together
    int timeoutCalls;   // against each fault that costs a time-out
    int cycles;         // Init and Close
    int loads;          // of the library
};

inline constexpr Effort kFullEffort{4'500, 5'000, 300, 1'000, 200};
inline constexpr Effort kShortEffort{150, 300, 40, 30, 20};

/// The one of this run.
inline Effort& CurrentEffort() {
    static Effort effort = kFullEffort;
    return effort;
}
