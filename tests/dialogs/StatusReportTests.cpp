// The status report inside the configuration dialog: its lines, its columns and how the dialog grows for them.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "DialogTest.h"
#include "dialogs/OpenDialog.h"
#include "oko/Result.h"
#include "ui/resources/ResourceIds.h"
#include "windows/LoadedLibrary.h"

namespace {

constexpr std::array<int, 3> kColumns{IDC_REPORT_FIRST, IDC_REPORT_SECOND, IDC_REPORT_THIRD};

/// The parameters of all the report's rows.
const std::string kAllParameters =
    "13 14 15 18 19 20 23 24 25 28 29 30 31 32 33 34 35 58 59 60 61 62 64 65 66 67 68 73 83 85 97 98 103 104 105 106 "
    "115 116 117 118 128 129 130 138 150 151 153 184 185 186 190 192 214 215 233 237 238 362 363 364 365 366 367";

int Height(const RECT& rect) { return static_cast<int>(rect.bottom - rect.top); }
int Width(const RECT& rect) { return static_cast<int>(rect.right - rect.left); }

/// Everything of the dialog that the report moves.
struct Geometry {
    explicit Geometry(const OpenDialog& dialog)
        : window(dialog.ScreenPlace()),
          group(dialog.Place(IDC_STATUS_GROUP)),
          ok(dialog.Place(IDOK)),
          cancel(dialog.Place(IDCANCEL)),
          showStatus(dialog.Place(IDC_SHOW_STATUS)) {
        std::ranges::transform(kColumns, columns.begin(), [&](int id) { return dialog.Place(id); });
    }

    RECT window, group, ok, cancel, showStatus;
    std::array<RECT, 3> columns;
};

void ExpectMovedDown(const RECT& before, const RECT& after, int distance) {
    EXPECT_EQ(after.left, before.left);
    EXPECT_EQ(after.top, before.top + distance);
    EXPECT_EQ(Width(after), Width(before));
    EXPECT_EQ(Height(after), Height(before));
}

void ExpectGrown(const RECT& before, const RECT& after, int growth) {
    EXPECT_EQ(after.left, before.left);
    EXPECT_EQ(after.top, before.top);
    EXPECT_EQ(Width(after), Width(before));
    EXPECT_EQ(Height(after), Height(before) + growth);
}

/// The dialog before and after the report, and the report's text.
struct ShownStatus {
    std::optional<Geometry> before, after;
    std::vector<std::wstring> columns;  // the visible ones
    bool groupShown = false;
    bool buttonShown = true;

    int Rows() const {
        int rows = 0;
        for (const std::wstring& column : columns) {
            rows += static_cast<int>(std::ranges::count(column, L'\n'));
        }
        return rows;
    }

    /// The line feeds before the one that ends a column.
    int LinesBefore(std::size_t column) const {
        return static_cast<int>(std::ranges::count(columns[column], L'\n')) - 1;
    }

    int LineHeight() const { return Height(before->columns[0]) / 2 + 1; }
    int Growth() const { return LineHeight() * Rows() - Height(before->columns[0]); }
};

class StatusReportTests : public IncubatorDialogTest {
 protected:
    ShownStatus ShowStatus(const std::vector<int>& products, const std::string& parameters = kAllParameters) {
        Start(products, parameters);
        ShownStatus shown;
        EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                      shown.before.emplace(dialog);
                      dialog.Click(IDC_SHOW_STATUS);
                      shown.after.emplace(dialog);
                      for (const int id : kColumns) {
                          if (dialog.IsShown(id)) {
                              shown.columns.push_back(dialog.Text(id));
                          }
                      }
                      shown.groupShown = dialog.IsShown(IDC_STATUS_GROUP);
                      shown.buttonShown = dialog.IsShown(IDC_SHOW_STATUS);
                      dialog.Click(IDCANCEL);
                  }),
                  oko::kFailure);
        return shown;
    }

    /// What every report does to the dialog, however many columns it has.
    static void ExpectDialogGrown(const ShownStatus& shown) {
        const int growth = shown.Growth();
        ExpectGrown(shown.before->window, shown.after->window, growth);
        ExpectGrown(shown.before->group, shown.after->group, growth);
        ExpectMovedDown(shown.before->ok, shown.after->ok, growth);
        ExpectMovedDown(shown.before->cancel, shown.after->cancel, growth);
        ExpectMovedDown(shown.before->showStatus, shown.after->showStatus, growth);
        EXPECT_TRUE(shown.groupShown);
        EXPECT_FALSE(shown.buttonShown);
    }

    /// The columns stand below each other, at the first one's left edge and as wide as it was.
    static void ExpectStacked(const ShownStatus& shown, const std::vector<int>& heights) {
        const RECT& template_ = shown.before->columns[0];
        long top = template_.top;
        for (std::size_t i = 0; i < heights.size(); ++i) {
            SCOPED_TRACE(i);
            const RECT& column = shown.after->columns[i];
            EXPECT_EQ(column.left, template_.left);
            EXPECT_EQ(column.top, top);
            EXPECT_EQ(Width(column), Width(template_));
            EXPECT_EQ(Height(column), heights[i]);
            top = column.bottom;
        }
    }
};

TEST_F(StatusReportTests, OneHeater_GivesItsFourteenLinesInOrder) {
    server.Answer("bl-param-read 8 64", "H201-K-FRAME");
    server.Answer("bl-param-read 8 98", "1200");
    const ShownStatus shown = ShowStatus({8});
    ASSERT_EQ(shown.columns.size(), 1U);
    EXPECT_EQ(shown.columns[0],
              L"H201 Product Code: H201-K-FRAME \n"
              L"H201 Production Date: 1 \n"
              L"H201 Service Date: 1 \n"
              L"H201 Serial Number: 1 \n"
              L"H201 Software Version: 1 \n"
              L"H201 Time when Air Heater Relay is Active: 1 %\n"
              L"H201 Control Mode: 1 \n"
              L"H201 Fast Heating: 1 \n"
              L"H201 Thermal Power of Air Heater: 1 W\n"
              L"H201 Fan Speed: 1200 rpm\n"
              L"H201 Status: 1 \n"
              L"H201 Prefilter Last Time Change: 1 days\n"
              L"H201 HEPA Filter Last Time Change: 1 days\n"
              L"H201 Filter Replacement Alert: 1 \n");
    EXPECT_EQ(shown.Rows(), 14);
    ExpectDialogGrown(shown);
    ExpectStacked(shown, {shown.LineHeight() * 14});
}

TEST_F(StatusReportTests, NoRows_ShrinksTheDialog) {
    const ShownStatus shown = ShowStatus({8}, "74 87 88");
    EXPECT_EQ(shown.columns, std::vector<std::wstring>{L""});
    EXPECT_EQ(shown.Growth(), -Height(shown.before->columns[0]));
    ExpectDialogGrown(shown);
    ExpectStacked(shown, {0});
}

TEST_F(StatusReportTests, ReportOfTwoColumns_IsSplitAfterItsLastCompleteLine) {
    const ShownStatus shown = ShowStatus({9, 12});
    ASSERT_EQ(shown.columns.size(), 2U);
    EXPECT_LE(shown.columns[0].size(), 1023U);
    EXPECT_EQ(shown.columns[0].back(), L'\n');
    const std::wstring nextLine = shown.columns[1].substr(0, shown.columns[1].find(L'\n') + 1);
    EXPECT_GT(shown.columns[0].size() + nextLine.size(), 1023U);
    EXPECT_EQ(shown.Rows(), 16 + 26);
    ExpectDialogGrown(shown);
    const int before = shown.LinesBefore(0);
    ExpectStacked(shown, {shown.LineHeight() * before, shown.LineHeight() * (shown.Rows() - before)});
}

TEST_F(StatusReportTests, ReportOfThreeColumns_KeepsTheRestInTheThird) {
    const ShownStatus shown = ShowStatus({9, 12, 10, 15});
    ASSERT_EQ(shown.columns.size(), 3U);
    EXPECT_LE(shown.columns[0].size(), 1023U);
    EXPECT_LE(shown.columns[1].size(), 1023U);
    EXPECT_EQ(shown.Rows(), 16 + 26 + 23 + 10);
    ExpectDialogGrown(shown);
    const int first = shown.LinesBefore(0);
    const int second = shown.LinesBefore(1);
    ExpectStacked(shown, {shown.LineHeight() * first, shown.LineHeight() * second,
                          shown.LineHeight() * (shown.Rows() - first - second)});
    EXPECT_EQ(shown.columns[2].substr(shown.columns[2].find(L"H301-HM The Duty")),
              L"H301-HM The Duty Cycle of The Total Flow Valve: 1 %\n");
}

TEST_F(StatusReportTests, ProductsWithoutRows_AddNothing) {
    const ShownStatus shown = ShowStatus({7, 8, 16});
    EXPECT_EQ(shown.Rows(), 14);
}

TEST_F(StatusReportTests, ParametersThatCannotBeRead_LeaveNoLine) {
    server.Answer("bl-param-read 8 64", "e no contact");
    server.Answer("bl-param-read 8 98", "nan");
    server.Answer("bl-param-read 8 128", "nan");  // a state word is shown as it is
    const ShownStatus shown = ShowStatus({8});
    EXPECT_EQ(shown.Rows(), 12);
    EXPECT_EQ(shown.columns[0].find(L"Product Code"), std::wstring::npos);
    EXPECT_EQ(shown.columns[0].find(L"Fan Speed"), std::wstring::npos);
    EXPECT_NE(shown.columns[0].find(L"H201 Status: nan \n"), std::wstring::npos);
    ExpectDialogGrown(shown);
}

TEST_F(StatusReportTests, KeyboardThatAskedForTheReport_WorksOnAfterIt) {
    struct Case {
        std::vector<WORD> keys;
        std::int32_t result;
    };
    Start({8}, kAllParameters);
    for (const Case& row : {Case{{VK_RETURN}, oko::kSuccess}, Case{{VK_ESCAPE}, oko::kFailure},
                            Case{{VK_TAB, VK_RETURN}, oko::kFailure}}) {
        const std::string keys = testing::PrintToString(row.keys);
        SCOPED_TRACE(keys);
        EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                      SCOPED_TRACE(keys);  // this is another thread
                      while (dialog.Focus() != dialog.Control(IDC_SHOW_STATUS)) {
                          dialog.Press(VK_TAB);
                      }
                      OpenDialog::Strike(VK_SPACE);
                      ASSERT_TRUE(WaitUntil([&] { return !dialog.IsShown(IDC_SHOW_STATUS); }));
                      dialog.Settle();
                      const HWND focus = dialog.Focus();
                      EXPECT_EQ(focus, dialog.Control(IDOK));  // where Tab goes from the button
                      EXPECT_TRUE(IsWindowVisible(focus) && IsWindowEnabled(focus));
                      // Drawn as the button that Enter presses, which the hidden one was.
                      EXPECT_EQ(GetWindowLongPtrW(focus, GWL_STYLE) & BS_TYPEMASK, BS_DEFPUSHBUTTON);
                      for (const WORD key : row.keys) {
                          OpenDialog::Strike(key);
                          WaitUntil([&] { return dialog.Focus() == dialog.Control(IDCANCEL) || !dialog.IsOpen(); });
                      }
                  }),
                  row.result);
    }
}

TEST_F(StatusReportTests, DialogOpenedAnew_IsAsItWasFirst) {
    const ShownStatus first = ShowStatus({8});
    server.NewCommands();
    EXPECT_EQ(ShowConfiguration([&](const OpenDialog& dialog) {
                  const Geometry now(dialog);
                  EXPECT_EQ(Height(now.window), Height(first.before->window));
                  EXPECT_TRUE(dialog.IsShown(IDC_SHOW_STATUS));
                  EXPECT_FALSE(dialog.IsShown(IDC_STATUS_GROUP));
                  dialog.Click(IDC_SHOW_STATUS);
                  dialog.Click(IDOK);
              }),
              oko::kSuccess);
    // The identity rows come from memory now: nine of the fourteen are read again.
    EXPECT_EQ(std::ranges::count_if(server.NewCommands(),
                                    [](const std::string& command) { return command.starts_with("bl-param-read"); }),
              9);
}

}  // namespace
