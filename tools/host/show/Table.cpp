#include "show/Table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Column = std::string TableRow::*;
constexpr std::array<Column, 7> kColumns{&TableRow::number, &TableRow::name, &TableRow::kind, &TableRow::current,
                                         &TableRow::target, &TableRow::unit, &TableRow::state};

/// Characters on the screen; the continuation bytes of UTF-8 take no room.
std::size_t Width(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

bool IsNumber(Column column) { return column == &TableRow::current || column == &TableRow::target; }

std::string Pad(const std::string& text, std::size_t width, bool right) {
    const std::string blanks(width - Width(text), ' ');
    return right ? blanks + text : text + blanks;
}

}  // namespace

std::string FormatValue(double value) {
    if (!std::isfinite(value)) {
        return "-";
    }
    std::array<char, 400> text{};
    std::ignore = std::snprintf(text.data(), text.size(), "%.2f", value);
    return text.data();
}

std::vector<std::string> FormatTable(const std::vector<TableRow>& rows) {
    std::vector<TableRow> all{{"#", "channel", "kind", "current", "target", "unit", "state"}};
    all.insert(all.end(), rows.begin(), rows.end());

    std::vector<std::string> lines(all.size());
    for (const Column column : kColumns) {
        std::size_t width = 0;
        for (const TableRow& row : all) {
            width = std::max(width, Width(row.*column));
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            lines[i] += Pad(all[i].*column, width, IsNumber(column)) + "  ";
        }
    }
    for (std::string& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}
