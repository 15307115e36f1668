#include "text/Columns.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

std::size_t ScreenWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::vector<std::string> FormatColumns(const std::vector<std::vector<std::string>>& rows,
                                       const std::vector<Align>& columns) {
    std::vector<std::string> lines(rows.size());
    for (std::size_t column = 0; column < columns.size(); ++column) {
        std::size_t width = 0;
        for (const auto& row : rows) {
            width = std::max(width, ScreenWidth(row.at(column)));
        }
        for (std::size_t i = 0; i < rows.size(); ++i) {
            const std::string& cell = rows[i][column];
            const std::string blanks(width - ScreenWidth(cell), ' ');
            lines[i] += (columns[column] == Align::Right ? blanks + cell : cell + blanks) + "  ";
        }
    }
    for (std::string& line : lines) {
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}
