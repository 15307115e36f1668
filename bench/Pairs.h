#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "Row.h"

/// Two kinds of work compared by their times, pair by pair: what slows the machine down for a while slows both halves
/// of a pair.

/// The seconds that `work` takes.
template <class Work>
double Seconds(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A block: runs something that gives its own seconds so often, and gives their lower quartile. Other programs only add
/// time, sometimes a thousandfold, which a sum would keep; and the very fastest run may be a lucky one.
template <class Timed>
double Block(std::size_t runs, Timed timed) {
    std::vector<double> seconds(runs);
    std::ranges::generate(seconds, timed);
    std::ranges::nth_element(seconds, seconds.begin() + static_cast<std::ptrdiff_t>(runs / 4));
    return seconds[runs / 4];
}

struct Ratio {
    double median;
    double min;
    double max;
};

/// How many times longer `work` takes than `base`. Each does a block and gives its seconds.
template <class Work, class Base>
Ratio RatioOfPairs(Work work, Base base) {
    constexpr std::size_t kPairs = 15;
    work();  // the first blocks only warm up
    base();
    std::array<double, kPairs> ratios{};
    for (std::size_t i = 0; i < kPairs; ++i) {
        // The second of two blocks may find the machine in another state than the first: they take turns.
        const bool workFirst = i % 2 == 0;
        const double before = workFirst ? work() : base();
        const double after = workFirst ? base() : work();
        ratios[i] = workFirst ? before / after : after / before;
    }
    std::ranges::sort(ratios);
    return {ratios[kPairs / 2], ratios.front(), ratios.back()};
}

/// "1.031 (0.972 to 1.104)"
inline std::string Text(const Ratio& ratio) {
    return Text(ratio.median, 3) + " (" + Text(ratio.min, 3) + " to " + Text(ratio.max, 3) + ")";
}

/// Ends the program by an exception when something did not run.
inline void Require(bool condition, const char* what) {
    if (!condition) {
        throw std::runtime_error(what);
    }
}
