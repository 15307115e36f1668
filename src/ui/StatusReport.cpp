#include "ui/StatusReport.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <utility>

#include "catalogue/Catalogue.h"
#include "channels/ParameterRead.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/LinkOperation.h"
#include "platform/WaitCursor.h"
#include "ui/StatusRows.h"

namespace {

/// Windows' static controls were once given no more at a time.
constexpr std::size_t kMaxColumnLength = 1023;

std::span<const StatusRow> RowsOf(std::int32_t product) noexcept {
    const auto found = std::ranges::find(kProductRows, product, &ProductRows::product);
    return found != kProductRows.end() ? found->rows : std::span<const StatusRow>{};
}

/// "H201 Fan Speed: 1200 rpm".
// kept: docs/oddities.md#blank-at-the-end
void AppendLine(StatusReport& report, const StatusRow& row, std::string_view value) {
    report.text.append(row.label).append(L": ");
    for (const char byte : value) {
        report.text.push_back(static_cast<wchar_t>(static_cast<unsigned char>(byte)));
    }
    report.text.append(L" ").append(row.unit).append(L"\n");
    ++report.rows;
}

struct Split {
    std::wstring rest;
    int linesBefore = 0;
};

/// Cuts a column that is too long after its last complete line; nothing is cut when its first line already is too long.
Split SplitColumn(std::wstring& column) {
    if (column.size() <= kMaxColumnLength) {
        return {};
    }
    const std::size_t lineFeed = column.rfind(L'\n', kMaxColumnLength - 1);
    if (lineFeed == std::wstring::npos) {
        return {};
    }
    const auto before = column.begin() + static_cast<std::ptrdiff_t>(lineFeed);
    const auto lines = static_cast<int>(std::count(column.begin(), before, L'\n'));
    Split split{column.substr(lineFeed + 1), lines};
    column.resize(lineFeed + 1);
    return split;
}

}  // namespace

StatusReport CollectStatusReport(CDevApiInterface_Impl& device) {
    const LinkOperation operation = LinkOperation::OverThisLink(device);
    StatusReport report;
    for (std::size_t i = 0; const auto product = ProductAt(device, i); ++i) {
        for (const StatusRow& row : RowsOf(*product)) {
            ParameterText value{};
            if (ReadDeviceParameter(operation, static_cast<std::uint32_t>(*product), row.parameter, value.data(),
                                    row.rowClass == RowClass::Measured, row.rowClass == RowClass::Identity,
                                    kNoCompanion)) {
                AppendLine(report, row, value.data());
            }
        }
    }
    return report;
}

void RunStatusReport(CDevApiInterface_Impl& device, const std::function<void(const StatusReport& report)>& layOut) {
    const WaitCursor wait;
    device.m_bBusy = true;
    const StatusReport report = CollectStatusReport(device);
    device.m_bBusy = false;
    layOut(report);
}

StatusColumns SplitStatusReport(std::wstring_view text) {
    StatusColumns columns;
    columns.texts[0] = text;
    for (std::size_t i = 0; i < columns.linesBefore.size(); ++i) {
        Split split = SplitColumn(columns.texts[i]);
        columns.texts[i + 1] = std::move(split.rest);
        columns.linesBefore[i] = split.linesBefore;
    }
    return columns;
}

StatusLayout LayOutStatusReport(int twoLinesHeight, int rows, const StatusColumns& columns) noexcept {
    const int lineHeight = twoLinesHeight / 2 + 1;
    const int reportHeight = lineHeight * rows;
    // kept: docs/oddities.md#report-without-rows
    StatusLayout layout{reportHeight, reportHeight - twoLinesHeight, {reportHeight, 0, 0}};
    // kept: docs/oddities.md#split-column
    if (!columns.texts[1].empty()) {
        layout.columnHeights[0] = lineHeight * columns.linesBefore[0];
        layout.columnHeights[1] = lineHeight * (rows - columns.linesBefore[0]);
    }
    if (!columns.texts[2].empty()) {
        layout.columnHeights[1] = lineHeight * columns.linesBefore[1];
        layout.columnHeights[2] = lineHeight * (rows - columns.linesBefore[1] - columns.linesBefore[0]);
    }
    return layout;
}
