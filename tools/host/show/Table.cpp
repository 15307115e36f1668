#include "show/Table.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

#include "text/Columns.h"

std::string FormatValue(double value) {
    if (!std::isfinite(value)) {
        return "-";
    }
    std::array<char, 400> text{};
    std::ignore = std::snprintf(text.data(), text.size(), "%.2f", value);
    return text.data();
}

std::vector<std::string> FormatTable(const std::vector<TableRow>& rows) {
    std::vector<std::vector<std::string>> cells{{"#", "channel", "kind", "current", "target", "unit", "state"}};
    for (const TableRow& row : rows) {
        cells.push_back({row.number, row.name, row.kind, row.current, row.target, row.unit, row.state});
    }
    using enum Align;
    return FormatColumns(cells, {Left, Left, Left, Right, Right, Left, Left});
}
