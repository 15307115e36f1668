#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Characters on the screen; the continuation bytes of UTF-8 take no room.
std::size_t ScreenWidth(const std::string& text);

enum class Align { Left, Right };

/// Rows of cells as lines, two blanks between the columns. Each row has one cell for each alignment.
std::vector<std::string> FormatColumns(const std::vector<std::vector<std::string>>& rows,
                                       const std::vector<Align>& columns);
