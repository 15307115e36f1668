#pragma once

#include <array>
#include <functional>
#include <string>
#include <string_view>

class CDevApiInterface_Impl;

/// The status report's text, its three columns and its layout: everything of it that needs no window.

/// All lines, each ending in a line feed, and how many there are.
struct StatusReport {
    std::wstring text;
    int rows = 0;
};

/// Reads the rows of every product of the catalogue. A parameter that cannot be read leaves no line. Blocks for one
/// exchange a row.
StatusReport CollectStatusReport(CDevApiInterface_Impl& device);

/// "Show Status": reads the report while the device is busy, then hands it to `layOut`; the wait cursor is up until
/// that is done. On the user-interface thread.
void RunStatusReport(CDevApiInterface_Impl& device, const std::function<void(const StatusReport& report)>& layOut);

/// The text spread over the three columns, which stand below each other. `linesBefore`: line feeds in a column before
/// the one that ends it, 0 when it was not split.
struct StatusColumns {
    std::array<std::wstring, 3> texts;
    std::array<int, 2> linesBefore{};
};

/// A column holds at most 1023 characters, up to its last complete line; the third takes whatever remains.
StatusColumns SplitStatusReport(std::wstring_view text);

/// How high things become, in pixels.
struct StatusLayout {
    int reportHeight;                  // of the first column before the split
    int growth;                        // of the group box and the dialog; negative when the report is short
    std::array<int, 3> columnHeights;  // a column without text has the height 0
};

/// `twoLinesHeight`: the height of the first column's control, which its template makes two lines high.
StatusLayout LayOutStatusReport(int twoLinesHeight, int rows, const StatusColumns& columns) noexcept;
