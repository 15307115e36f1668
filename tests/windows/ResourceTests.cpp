// The dialog templates as they stand in the built library: ids, classes, styles, places, texts, and whether the texts
// fit.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "DialogTemplate.h"
#include "DialogTexts.h"
#include "LoadedLibrary.h"
#include "TextMargin.h"
#include "ui/resources/ResourceIds.h"

namespace {

constexpr DWORD kButton = WS_CHILD | WS_VISIBLE | WS_TABSTOP;
constexpr DWORD kLabel = WS_CHILD | WS_VISIBLE | WS_GROUP | SS_LEFT;
constexpr DWORD kGroup = WS_CHILD | WS_VISIBLE | BS_GROUPBOX;
constexpr DWORD kEdit = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL;

/// A control as it is drawn up, with its English place. The ids are a copy on purpose: the numbers that the library and
/// the other tests use are held against it.
struct Planned {
    int id;
    const wchar_t* windowClass;
    DWORD style;
    int x, y, width, height;
};

const std::vector<Planned> kProgress{
    {1020, L"msctls_progress32", WS_CHILD | WS_VISIBLE | WS_BORDER, 7, 7, 137, 14},
    {1021, L"Static", WS_CHILD | WS_VISIBLE | WS_GROUP | SS_CENTER, 57, 24, 37, 8},
};
const std::vector<Planned> kConfiguration{
    {1, L"Button", kButton | BS_DEFPUSHBUTTON, 56, 142, 50, 14},
    {2, L"Button", kButton, 110, 142, 50, 14},
    {1017, L"Static", kLabel, 35, 29, 45, 8},
    {-1, L"Static", kLabel, 91, 16, 22, 8},
    {-1, L"Static", kLabel, 127, 16, 24, 8},
    {1009, L"Edit", kEdit, 89, 27, 30, 14},
    {-1, L"Static", kLabel, 158, 29, 14, 8},
    {1010, L"Edit", kEdit, 124, 27, 30, 14},
    {-1, L"Static", kLabel, 62, 45, 18, 8},
    {1011, L"Edit", kEdit, 89, 43, 30, 14},
    {-1, L"Static", kLabel, 158, 45, 14, 8},
    {1012, L"Edit", kEdit, 124, 43, 30, 14},
    {-1, L"Static", kLabel, 67, 61, 13, 8},
    {1013, L"Edit", kEdit, 89, 59, 30, 14},
    {-1, L"Static", kLabel, 158, 61, 14, 8},
    {1014, L"Edit", kEdit, 124, 59, 30, 14},
    {-1, L"Button", kGroup, 7, 6, 203, 88},
    {1023, L"Button", kGroup, 7, 111, 203, 28},
    {1025, L"Static", kLabel, 13, 120, 190, 15},
    {1024, L"Button", kButton | BS_AUTOCHECKBOX, 89, 101, 44, 10},
    {-1, L"Static", kLabel, 49, 77, 31, 8},
    {1015, L"Edit", kEdit, 89, 75, 30, 14},
    {-1, L"Static", kLabel, 157, 77, 14, 8},
    {1016, L"Edit", kEdit, 123, 75, 30, 14},
    {1026, L"Static", kLabel, 7, 110, 190, 8},
    {1027, L"Static", kLabel, 20, 110, 190, 8},
    {1028, L"Button", kButton, 89, 119, 50, 14},
};
const std::vector<Planned> kConnection{
    {1, L"Button", kButton | BS_DEFPUSHBUTTON, 7, 33, 50, 14},
    {-1, L"Static", kLabel, 19, 10, 33, 8},
    {1018, L"ComboBox", WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST | CBS_SORT, 55, 8, 75, 104},
    {1019, L"Button", kButton, 78, 33, 68, 14},
};
const std::vector<Planned> kPanel{
    {1002, L"Button", kButton, 28, 46, 50, 14},
    {1003, L"Button", kButton, 82, 46, 50, 14},
    {1001, L"Edit", kEdit, 75, 20, 35, 12},
    {-1, L"Static", kLabel, 32, 21, 41, 11},
};

constexpr std::array kDialogNames{L"IDD_PROGRESS", L"INCUBATOR_CONFIGURATION", L"INCUBATOR_CONNECTION",
                                  L"INCUBATOR_DIALOG1"};

constexpr int kEnglish = 1033;

/// The configuration dialog's texts, control by control.
std::vector<std::wstring> ConfigurationTexts(const DialogTexts& texts) {
    const auto& t = texts.configuration;
    const std::wstring colon = texts.colon;
    const std::wstring percent = texts.percent;
    return {t[1], t[2],    t[3],  t[4],          t[5],    L"",     L"[\u00B0C]", L"",       L"CO2" + colon,
            L"",  percent, L"",   L"O2" + colon, L"",     percent, L"",          t[6],      t[7],
            t[8], t[9],    t[10], L"",           percent, L"",     L"Static",    L"Static", t[11]};
}

class ResourceTests : public testing::Test {
 protected:
    ResourceTests() : m_hModule(LoadLibraryExW(LibraryFile().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE)) {}
    ~ResourceTests() override { FreeLibrary(m_hModule); }

    DialogTemplate Read(const wchar_t* name, int language) const {
        auto dialog = ReadTemplate(m_hModule, name, language);
        EXPECT_TRUE(dialog) << language;
        return dialog.value_or(DialogTemplate{});
    }

    /// Holds a template against its plan and its texts; places only for English.
    static void Expect(const DialogTemplate& dialog, const std::vector<Planned>& plan,
                       const std::vector<std::wstring>& texts, int language) {
        ASSERT_EQ(dialog.controls.size(), plan.size());
        for (std::size_t i = 0; i < plan.size(); ++i) {
            SCOPED_TRACE(testing::Message() << "language " << language << " control " << i << " id " << plan[i].id);
            const TemplateControl& control = dialog.controls[i];
            EXPECT_EQ(control.id, plan[i].id);
            // Resource compilers write class names in their own case; Windows does not tell them apart.
            EXPECT_EQ(_wcsicmp(control.windowClass.c_str(), plan[i].windowClass), 0);
            EXPECT_EQ(control.style, plan[i].style);
            EXPECT_EQ(control.text, texts[i]);
            if (language == kEnglish) {
                EXPECT_EQ(control.place.left, plan[i].x);
                EXPECT_EQ(control.place.top, plan[i].y);
                EXPECT_EQ(control.place.right - control.place.left, plan[i].width);
                EXPECT_EQ(control.place.bottom - control.place.top, plan[i].height);
            }
            EXPECT_GE(control.place.left, 0);
            EXPECT_LE(control.place.right, dialog.width);
            EXPECT_TRUE(control.place.bottom <= dialog.height || control.id == IDC_PORT_LIST);
        }
    }

    HMODULE m_hModule;
};

constexpr DWORD kFrame = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU;

TEST_F(ResourceTests, Progress_OfEveryLanguage) {
    for (const DialogTexts& texts : kDialogTexts) {
        SCOPED_TRACE(texts.name);
        const DialogTemplate dialog = Read(L"IDD_PROGRESS", texts.language);
        EXPECT_EQ(dialog.caption, texts.progress[0]);
        EXPECT_EQ(dialog.font, L"MS Shell Dlg");
        EXPECT_EQ(dialog.pointSize, 8);
        EXPECT_EQ(dialog.style, kFrame | DS_SHELLFONT);
        EXPECT_EQ(dialog.width, 151);
        EXPECT_EQ(dialog.height, 41);
        Expect(dialog, kProgress, {L"", texts.progress[1]}, texts.language);
    }
}

TEST_F(ResourceTests, Configuration_OfEveryLanguage) {
    for (const DialogTexts& texts : kDialogTexts) {
        SCOPED_TRACE(texts.name);
        const DialogTemplate dialog = Read(L"INCUBATOR_CONFIGURATION", texts.language);
        EXPECT_EQ(dialog.caption, texts.configuration[0]);
        EXPECT_EQ(dialog.font, L"MS Shell Dlg 2");
        EXPECT_EQ(dialog.style, kFrame | DS_SETFONT);
        EXPECT_EQ(dialog.width, 217);
        EXPECT_EQ(dialog.height, 163);
        Expect(dialog, kConfiguration, ConfigurationTexts(texts), texts.language);
        // The report's columns are measured and filled by pixels: in every language the same.
        for (const std::size_t i : {18U, 24U, 25U}) {
            SCOPED_TRACE(i);
            EXPECT_EQ(dialog.controls[i].place.left, kConfiguration[i].x);
            EXPECT_EQ(dialog.controls[i].place.bottom - dialog.controls[i].place.top, kConfiguration[i].height);
        }
    }
}

TEST_F(ResourceTests, Connection_OfEveryLanguage) {
    for (const DialogTexts& texts : kDialogTexts) {
        SCOPED_TRACE(texts.name);
        const DialogTemplate dialog = Read(L"INCUBATOR_CONNECTION", texts.language);
        EXPECT_EQ(dialog.caption, texts.connection[0]);
        EXPECT_EQ(dialog.style, kFrame | DS_SETFONT);
        EXPECT_EQ(dialog.width, 153);
        EXPECT_EQ(dialog.height, 54);
        Expect(dialog, kConnection, {texts.connection[1], texts.connection[2], L"", texts.connection[3]},
               texts.language);
    }
}

TEST_F(ResourceTests, Panel_OfEveryLanguage) {
    for (const DialogTexts& texts : kDialogTexts) {
        SCOPED_TRACE(texts.name);
        const DialogTemplate dialog = Read(L"INCUBATOR_DIALOG1", texts.language);
        EXPECT_EQ(dialog.caption, L"");
        EXPECT_EQ(dialog.style, static_cast<DWORD>(DS_SETFONT | WS_CHILD));
        EXPECT_EQ(dialog.width, texts.panelWidth);
        EXPECT_EQ(dialog.height, 71);
        Expect(dialog, kPanel, {texts.panel[0], texts.panel[1], L"", texts.panel[2]}, texts.language);
    }
}

TEST_F(ResourceTests, GermanConnection_HasItsGivenPlaces) {
    const DialogTemplate dialog = Read(L"INCUBATOR_CONNECTION", 1031);
    EXPECT_EQ(dialog.controls[2].place.left, 65);
    EXPECT_EQ(dialog.controls[3].place.right - dialog.controls[3].place.left, 74);
}

/// The identifiers of the languages that a dialog exists in.
std::set<int> LanguagesOf(HMODULE module, const wchar_t* dialog) {
    std::set<int> languages;
    const auto note = [](HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR result) -> BOOL {
        reinterpret_cast<std::set<int>*>(result)->insert(language);
        return TRUE;
    };
    EnumResourceLanguagesW(module, MAKEINTRESOURCEW(5), dialog, note, reinterpret_cast<LONG_PTR>(&languages));
    return languages;
}

TEST_F(ResourceTests, EveryDialog_IsInEachOfTheLanguagesAndInNoOther) {
    std::set<int> expected;
    for (const DialogTexts& texts : kDialogTexts) {
        expected.insert(texts.language);
    }
    for (const wchar_t* const name : kDialogNames) {
        EXPECT_EQ(LanguagesOf(m_hModule, name), expected) << testing::PrintToString(name);
    }
}

/// How wide texts are, and what a width in dialog units comes to.
class TextMeasure {
 public:
    virtual ~TextMeasure() = default;
    virtual int Width(const std::wstring& text) const = 0;

    int Pixels(long units) const { return MulDiv(static_cast<int>(units), BaseUnit(), 4); }

    /// As the dialog manager finds it.
    int BaseUnit() const { return (Width(L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz") / 26 + 1) / 2; }
};

/// A font with a device context to measure it in.
class MeasuredFont {
 public:
    MeasuredFont(const wchar_t* name, int height)
        : m_dc(CreateCompatibleDC(nullptr)),
          m_font(CreateFontW(-height, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, name)),
          m_before(SelectObject(m_dc, m_font)) {}
    ~MeasuredFont() {
        SelectObject(m_dc, m_before);
        DeleteObject(m_font);
        DeleteDC(m_dc);
    }
    MeasuredFont(const MeasuredFont&) = delete;
    MeasuredFont& operator=(const MeasuredFont&) = delete;

    HDC Context() const { return m_dc; }

 private:
    HDC m_dc;
    HFONT m_font;
    HGDIOBJ m_before;
};

constexpr int kPixelHeight = 11;  // 8 point at 96 dots an inch

/// With the font that this system has for the dialogs.
class SystemMeasure : public TextMeasure {
 public:
    explicit SystemMeasure(const std::wstring& font) : m_font(font.c_str(), kPixelHeight) {}

    int Width(const std::wstring& text) const override {
        SIZE size{};
        GetTextExtentPoint32W(m_font.Context(), text.c_str(), static_cast<int>(text.size()), &size);
        return static_cast<int>(size.cx);
    }

 private:
    MeasuredFont m_font;
};

/// With Tahoma as Windows draws it: its design widths, rounded to pixels character by character. The file is Wine's,
/// which has the design widths of the original and only its pixels wrong.
class WindowsMeasure : public TextMeasure {
 public:
    WindowsMeasure() : m_nLoaded(AddFontResourceExW(kFile, FR_PRIVATE, nullptr)), m_font(L"Tahoma", kDesignHeight) {
        EXPECT_EQ(m_nLoaded, 1);
        EXPECT_EQ(BaseUnit(), 6);  // of every Windows at this resolution
    }
    ~WindowsMeasure() override { RemoveFontResourceExW(kFile, FR_PRIVATE, nullptr); }

    int Width(const std::wstring& text) const override {
        int width = 0;
        for (const wchar_t character : text) {
            constexpr wchar_t kFirstEastern = 0x2E80;
            int design = kDesignHeight;  // the linked font's characters are as wide as high
            if (character < kFirstEastern) {
                GetCharWidth32W(m_font.Context(), character, character, &design);
            }
            width += MulDiv(design, kPixelHeight, kDesignHeight);
        }
        return width;
    }

 private:
    static constexpr const wchar_t* kFile = L"Z:\\usr\\share\\wine\\fonts\\tahoma.ttf";
    static constexpr int kDesignHeight = 2048;

    int m_nLoaded;
    MeasuredFont m_font;
};

void ExpectTextsFit(const DialogTemplate& dialog, const TextMeasure& measure) {
    for (const TemplateControl& control : dialog.controls) {
        const std::wstring firstLine = control.text.substr(0, control.text.find(L'\n'));
        const int needed = measure.Width(firstLine) + TextMargin(control.windowClass, control.style);
        EXPECT_LE(needed, measure.Pixels(control.place.right - control.place.left))
            << "id " << control.id << " width in units " << control.place.right - control.place.left;
    }
}

TEST_F(ResourceTests, EveryText_FitsItsControlInThisSystemsFont) {
    for (const DialogTexts& texts : kDialogTexts) {
        for (const wchar_t* const name : kDialogNames) {
            SCOPED_TRACE(testing::Message() << texts.name << " " << name);
            const DialogTemplate dialog = Read(name, texts.language);
            EXPECT_EQ(dialog.pointSize, 8);
            ExpectTextsFit(dialog, SystemMeasure(dialog.font));
        }
    }
}

TEST_F(ResourceTests, EveryText_FitsItsControlInTheFontOfWindows) {
    const WindowsMeasure measure;
    for (const DialogTexts& texts : kDialogTexts) {
        for (const wchar_t* const name : kDialogNames) {
            SCOPED_TRACE(testing::Message() << texts.name << " " << name);
            ExpectTextsFit(Read(name, texts.language), measure);
        }
    }
}

/// Where the texts of the labels before the tolerances' fields end, in pixels.
std::vector<int> LabelEnds(const DialogTemplate& dialog, const TextMeasure& measure) {
    std::vector<int> ends;
    for (const std::size_t i : {2U, 8U, 12U, 20U}) {  // temperature, CO2, O2, humidity
        const TemplateControl& label = dialog.controls[i];
        ends.push_back(measure.Pixels(label.place.left) + measure.Width(label.text));
    }
    return ends;
}

TEST_F(ResourceTests, ConfigurationLabels_EndAtOneEdgeBeforeTheFields) {
    const WindowsMeasure measure;
    for (const DialogTexts& texts : kDialogTexts) {
        SCOPED_TRACE(texts.name);
        const DialogTemplate dialog = Read(L"INCUBATOR_CONFIGURATION", texts.language);
        const std::vector<int> ends = LabelEnds(dialog, measure);
        const auto [first, last] = std::ranges::minmax(ends);
        // No finer than one unit can a text be placed. The English places are given, rounded to units twice.
        const int allowed = measure.Pixels(texts.language == kEnglish ? 2 : 1);
        EXPECT_LE(last - first, allowed) << testing::PrintToString(ends);
        EXPECT_LT(last, measure.Pixels(dialog.controls[5].place.left));  // the first field
    }
}

TEST_F(ResourceTests, ControlsThatAreVisibleTogether_DoNotOverlap) {
    for (const DialogTexts& texts : kDialogTexts) {
        for (const wchar_t* const name : {L"INCUBATOR_CONFIGURATION", L"INCUBATOR_CONNECTION", L"INCUBATOR_DIALOG1"}) {
            SCOPED_TRACE(testing::Message() << texts.name << " " << name);
            DialogTemplate dialog = Read(name, texts.language);
            std::erase_if(dialog.controls, [](const TemplateControl& control) {
                // Group boxes surround; the report is hidden at first; a closed list is one line high.
                return (control.windowClass == L"Button" && (control.style & 0xFU) == BS_GROUPBOX) ||
                       (control.id >= IDC_REPORT_FIRST && control.id <= IDC_REPORT_THIRD);
            });
            for (TemplateControl& control : dialog.controls) {
                if (control.id == IDC_PORT_LIST) {
                    control.place.bottom = control.place.top + 14;
                }
            }
            for (std::size_t i = 0; i < dialog.controls.size(); ++i) {
                for (std::size_t k = 0; k < i; ++k) {
                    RECT both{};
                    EXPECT_FALSE(IntersectRect(&both, &dialog.controls[i].place, &dialog.controls[k].place))
                        << "ids " << dialog.controls[i].id << " " << dialog.controls[k].id << " places " << i << " "
                        << k;
                }
            }
        }
    }
}

}  // namespace
