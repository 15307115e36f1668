#pragma once

#include <cstdio>
#include <string>

/// The table of scripts/bench: what was measured, the result, the goal, and whether it was met.

inline void PrintLine(const std::string& name, const std::string& measured, const std::string& goal,
                      const std::string& verdict) {
    std::printf("%-42s  %-26s  %-7s  %s\n", name.c_str(), measured.c_str(), goal.c_str(), verdict.c_str());
    std::fflush(stdout);
}

/// A number with so many decimals.
inline std::string Text(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

/// A row whose `value`, shown as `measured`, is to be no more than `goal`.
inline void PrintRow(const std::string& name, const std::string& measured, double value, const std::string& goal,
                     double atMost) {
    PrintLine(name, measured, goal, value <= atMost ? "met" : "NOT met");
}

/// A row without a goal.
inline void PrintRow(const std::string& name, const std::string& measured) { PrintLine(name, measured, "none", ""); }
