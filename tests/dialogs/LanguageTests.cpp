// Every dialog as the system shows it in one language, that of OKO_LANGUAGE: which template comes, and whether its
// texts fit.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "DialogTest.h"
#include "dialogs/OpenDialog.h"
#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "ui/resources/ResourceIds.h"
#include "windows/DialogTexts.h"
#include "windows/LoadedLibrary.h"
#include "windows/TextMargin.h"

namespace {

/// The language whose templates the system picks.
int PickedLanguage() {
    const HMODULE library = GetModuleHandleW(L"OkoLabBoldLine.dll");
    constexpr const wchar_t* kName = L"INCUBATOR_CONFIGURATION";
    const auto dialogType = MAKEINTRESOURCEW(5);
    const auto picked = std::ranges::find_if(kDialogTexts, [&](const DialogTexts& texts) {
        return FindResourceW(library, kName, dialogType) ==
               FindResourceExW(library, dialogType, kName, static_cast<WORD>(texts.language));
    });
    EXPECT_NE(picked, kDialogTexts.end());
    return picked != kDialogTexts.end() ? picked->language : 1033;
}

/// A language that the dialogs do not exist in.
constexpr std::string_view kWithoutDialogs = "fo_FO";

/// The texts of the language that this process runs in; English where none is named, the system's choice where
/// there are no dialogs in it.
const DialogTexts& Texts() {
    const char* const set = std::getenv("OKO_LANGUAGE");
    const std::string_view named = set != nullptr && *set != '\0' ? set : "en_US";
    const auto known = std::ranges::find(kDialogTexts, named, &DialogTexts::name);
    if (known != kDialogTexts.end()) {
        return *known;
    }
    EXPECT_EQ(named, kWithoutDialogs) << "no texts are expected of this language";
    return *std::ranges::find(kDialogTexts, PickedLanguage(), &DialogTexts::language);
}

/// A visible control on the screen.
struct Seen {
    int id;
    std::wstring windowClass;
    std::wstring text;
    DWORD style;
    RECT place;  // in the dialog's client area
    HWND window;

    bool IsGroupBox() const { return windowClass == L"Button" && (style & BS_TYPEMASK) == BS_GROUPBOX; }
};

std::vector<Seen> VisibleControls(const OpenDialog& dialog) {
    std::vector<Seen> controls;
    for (HWND window = GetWindow(dialog.Window(), GW_CHILD); window != nullptr;
         window = GetWindow(window, GW_HWNDNEXT)) {
        const auto style = static_cast<DWORD>(GetWindowLongPtrW(window, GWL_STYLE));
        if ((style & WS_VISIBLE) == 0) {
            continue;
        }
        std::array<wchar_t, 64> name{};
        std::array<wchar_t, 256> text{};
        GetClassNameW(window, name.data(), static_cast<int>(name.size()));
        SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
        RECT place{};
        GetWindowRect(window, &place);
        MapWindowPoints(nullptr, dialog.Window(), reinterpret_cast<POINT*>(&place), 2);
        controls.push_back({GetDlgCtrlID(window), name.data(), text.data(), style, place, window});
    }
    return controls;
}

int TextWidth(HFONT font, const std::wstring& text) {
    const HDC dc = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(dc, font);
    SIZE size{};
    GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &size);
    SelectObject(dc, before);
    ReleaseDC(nullptr, dc);
    return static_cast<int>(size.cx);
}

HFONT FontOf(HWND window) { return reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)); }

/// The caption has the window's width without its frame and its close box.
void ExpectCaptionFits(const OpenDialog& dialog) {
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    const HFONT font = CreateFontIndirectW(&metrics.lfCaptionFont);
    RECT client{};
    GetClientRect(dialog.Window(), &client);
    constexpr int kGaps = 8;
    EXPECT_LE(TextWidth(font, dialog.Caption()) + GetSystemMetrics(SM_CXSIZE) + kGaps, client.right);
    DeleteObject(font);
}

/// Nothing is cut off, misplaced or laid over something else.
void ExpectWellLaidOut(const OpenDialog& dialog) {
    const std::vector<Seen> controls = VisibleControls(dialog);
    RECT client{};
    GetClientRect(dialog.Window(), &client);
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const Seen& control = controls[i];
        SCOPED_TRACE(testing::Message() << "language " << Texts().language << " id " << control.id);
        EXPECT_TRUE(control.place.left >= 0 && control.place.top >= 0 && control.place.right <= client.right &&
                    control.place.bottom <= client.bottom);
        if (control.windowClass != L"Edit" && control.windowClass != L"ComboBox") {
            const int room = static_cast<int>(control.place.right - control.place.left);
            EXPECT_LE(TextWidth(FontOf(control.window), control.text) + TextMargin(control.windowClass, control.style),
                      room);
        }
        for (std::size_t k = 0; k < i; ++k) {
            RECT both{};
            EXPECT_FALSE(!control.IsGroupBox() && !controls[k].IsGroupBox() &&
                         IntersectRect(&both, &control.place, &controls[k].place))
                << "over id " << controls[k].id;
        }
    }
    ExpectCaptionFits(dialog);
}

class LanguageTests : public DialogTest {};

TEST_F(LanguageTests, Configuration_IsInTheSystemsLanguageAndFits) {
    CDevApiInterface& simulator = m_library.Device(oko::kSimulatorDevice);
    ASSERT_EQ(simulator.Init(HostRecord::Callback, nullptr), oko::kSuccess);
    WithDialog(
        [&] { return simulator.ShowConfiguration(text.data(), static_cast<std::int32_t>(text.size()), parent.Get()); },
        [](const OpenDialog& dialog) {
            const auto& texts = Texts().configuration;
            EXPECT_EQ(dialog.Caption(), texts[0]);
            const std::map<int, const wchar_t*> byId{{IDOK, texts[1]},
                                                     {IDCANCEL, texts[2]},
                                                     {IDC_TEMPERATURE_LABEL, texts[3]},
                                                     {IDC_STATUS_GROUP, texts[7]},
                                                     {IDC_REPORT_FIRST, texts[8]},
                                                     {IDC_AIR_MODE, texts[9]},
                                                     {IDC_SHOW_STATUS, texts[11]}};
            for (const auto& [id, expected] : byId) {
                EXPECT_EQ(dialog.Text(id), expected) << id;
            }
            ExpectWellLaidOut(dialog);
            dialog.Click(IDCANCEL);
        });
    simulator.Close();
}

TEST_F(LanguageTests, Connection_IsInTheSystemsLanguageAndFits) {
    ShowConnection([](const OpenDialog& dialog) {
        const auto& texts = Texts().connection;
        EXPECT_EQ(dialog.Caption(), texts[0]);
        EXPECT_EQ(dialog.Text(IDOK), texts[1]);
        EXPECT_EQ(dialog.Text(IDC_FIND_AND_CONNECT), texts[3]);
        ExpectWellLaidOut(dialog);
        dialog.PressCloseBox();
    });
}

TEST_F(LanguageTests, Panel_IsInTheSystemsLanguageAndFits) {
    const OpenDialog panel(static_cast<HWND>(Device().CreateValuePanel(parent.Get(), nullptr)));
    ShowWindow(panel.Window(), SW_SHOW);
    const auto& texts = Texts().panel;
    EXPECT_EQ(panel.Text(IDC_SET_VALUE), texts[0]);
    EXPECT_EQ(panel.Text(IDC_GET_VALUE), texts[1]);
    ExpectWellLaidOut(panel);
    DestroyWindow(panel.Window());
}

/// Opened from the library's resources: the library itself opens it only for a search.
TEST_F(LanguageTests, Progress_IsInTheSystemsLanguageAndFits) {
    const OpenDialog window(CreateDialogParamW(
        GetModuleHandleW(L"OkoLabBoldLine.dll"), L"IDD_PROGRESS", parent.Get(),
        [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0));
    ASSERT_NE(window.Window(), nullptr);
    ShowWindow(window.Window(), SW_SHOW);
    EXPECT_EQ(window.Caption(), Texts().progress[0]);
    EXPECT_EQ(window.Text(IDC_PROGRESS_TEXT), Texts().progress[1]);
    for (const wchar_t* const shown : {Texts().progress[1], L"100 %"}) {
        SCOPED_TRACE(shown);
        SetDlgItemTextW(window.Window(), IDC_PROGRESS_TEXT, shown);
        ExpectWellLaidOut(window);
    }
    DestroyWindow(window.Window());
}

}  // namespace
