// The status report inside the configuration dialog. Its text and its arithmetic are in StatusReport.

#include "ui/StatusReportView.h"

#include <array>
#include <cstddef>

#include "oko/WindowHandle.h"
#include "platform/win32/Windows.h"
#include "ui/StatusReport.h"
#include "ui/resources/ResourceIds.h"

namespace {

constexpr std::array kColumnIds{IDC_REPORT_FIRST, IDC_REPORT_SECOND, IDC_REPORT_THIRD};

/// A window's place: on the screen, or in the client area of its parent.
RECT ScreenRect(HWND window) noexcept {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

RECT ClientRectOf(HWND dialog, int id) noexcept {
    RECT rect = ScreenRect(GetDlgItem(dialog, id));
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&rect), 2);
    return rect;
}

int Width(const RECT& rect) noexcept { return rect.right - rect.left; }
int Height(const RECT& rect) noexcept { return rect.bottom - rect.top; }

void Resize(HWND window, int width, int height) noexcept {
    SetWindowPos(window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Grow(HWND window, int growth) noexcept {
    const RECT rect = ScreenRect(window);
    Resize(window, Width(rect), Height(rect) + growth);
}

/// Without repainting: the dialog repaints itself when it has grown.
void MoveDown(HWND dialog, int id, int distance) noexcept {
    const RECT rect = ClientRectOf(dialog, id);
    MoveWindow(GetDlgItem(dialog, id), rect.left, rect.top + distance, Width(rect), Height(rect), FALSE);
}

void Show(HWND dialog, int id, bool shown) noexcept { ShowWindow(GetDlgItem(dialog, id), shown ? SW_SHOW : SW_HIDE); }

/// Hides a control, which must not take the keyboard with it: the focus goes where Tab would take it.
void HideAndLeave(HWND dialog, int id) noexcept {
    if (GetFocus() == GetDlgItem(dialog, id)) {
        SendMessageW(dialog, WM_NEXTDLGCTL, 0, FALSE);
    }
    Show(dialog, id, false);
}

/// Puts a further column at the left edge and the bottom edge of the one above it.
void PlaceBelow(HWND dialog, int id, int aboveId, int width, int height) noexcept {
    const RECT above = ClientRectOf(dialog, aboveId);
    MoveWindow(GetDlgItem(dialog, id), above.left, above.bottom, width, height, TRUE);
}

void LayOut(HWND dialog, const StatusReport& report) {
    Show(dialog, IDC_STATUS_GROUP, true);
    for (const int id : kColumnIds) {
        Show(dialog, id, true);
    }

    const StatusColumns columns = SplitStatusReport(report.text);
    const RECT first = ClientRectOf(dialog, IDC_REPORT_FIRST);
    const int width = Width(first);
    const StatusLayout layout = LayOutStatusReport(Height(first), report.rows, columns);

    Resize(GetDlgItem(dialog, IDC_REPORT_FIRST), width, layout.reportHeight);
    Grow(GetDlgItem(dialog, IDC_STATUS_GROUP), layout.growth);
    Grow(dialog, layout.growth);
    for (const int id : {IDOK, IDCANCEL, IDC_SHOW_STATUS}) {
        MoveDown(dialog, id, layout.growth);
    }

    SetDlgItemTextW(dialog, IDC_REPORT_FIRST, columns.texts[0].c_str());
    Resize(GetDlgItem(dialog, IDC_REPORT_FIRST), width, layout.columnHeights[0]);
    for (std::size_t i = 1; i < kColumnIds.size(); ++i) {
        if (columns.texts[i].empty()) {
            Show(dialog, kColumnIds[i], false);
            continue;
        }
        SetDlgItemTextW(dialog, kColumnIds[i], columns.texts[i].c_str());
        PlaceBelow(dialog, kColumnIds[i], kColumnIds[i - 1], width, layout.columnHeights[i]);
    }
    HideAndLeave(dialog, IDC_SHOW_STATUS);
    // The buttons moved without repainting and left their traces below the report.
    InvalidateRect(dialog, nullptr, TRUE);
}

}  // namespace

void ShowStatusReport(CDevApiInterface_Impl& device, oko::WindowHandle dialog) {
    RunStatusReport(device, [dialog](const StatusReport& report) { LayOut(static_cast<HWND>(dialog), report); });
}
