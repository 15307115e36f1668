#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// How long something took, counted in classes of rising upper bounds.
struct DurationHistogram {
    static constexpr std::array<double, 10> kBounds{0.0005, 0.001, 0.0025, 0.005, 0.01,
                                                    0.05,   0.25,  1.0,    5.0,   30.0};  // s

    std::array<std::uint64_t, kBounds.size() + 1> counts{};  // the last one: longer than all bounds
    double sumSeconds = 0.0;

    void Add(double seconds) {
        std::size_t i = 0;
        while (i < kBounds.size() && seconds > kBounds[i]) {
            ++i;
        }
        ++counts[i];
        sumSeconds += seconds;
    }
};
