#pragma once

#include <string>
#include <vector>

/// One line of the monitor's table, and how a table of them is written.

struct TableRow {
    std::string number;
    std::string name;
    std::string kind;
    std::string current;
    std::string target;
    std::string unit;
    std::string state;
};

/// "37.51", or "-" for what is no number.
std::string FormatValue(double value);

/// The heading and the rows in columns, a line each.
std::vector<std::string> FormatTable(const std::vector<TableRow>& rows);
