#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "platform/win32/Windows.h"

/// A dialog template as it stands in the library's resources.

struct TemplateControl {
    int id;
    std::wstring windowClass;  // "Button" and its like for the numbered classes
    std::wstring text;
    DWORD style;
    RECT place;  // dialog units
};

struct DialogTemplate {
    std::wstring caption;
    std::wstring font;
    int pointSize;
    DWORD style;
    int width;
    int height;
    std::vector<TemplateControl> controls;
};

/// Reads the parts of an extended template one after the other.
class TemplateReader {
 public:
    explicit TemplateReader(const void* data) : m_begin(static_cast<const char*>(data)), m_next(m_begin) {}

    template <class Number>
    Number Take() {
        Number number{};
        std::memcpy(&number, m_next, sizeof number);
        m_next += sizeof number;
        return number;
    }

    std::wstring TakeText() {
        std::wstring text;
        while (const auto character = Take<wchar_t>()) {
            text += character;
        }
        return text;
    }

    /// A text, or the number that stands for one.
    std::wstring TakeTextOrNumber() {
        if (Peek() != 0xFFFF) {
            return TakeText();
        }
        Take<WORD>();
        return L"#" + std::to_wstring(Take<WORD>());
    }

    void AlignToDword() { m_next += (4 - (m_next - m_begin) % 4) % 4; }

 private:
    WORD Peek() const {
        WORD word = 0;
        std::memcpy(&word, m_next, sizeof word);
        return word;
    }

    const char* m_begin;
    const char* m_next;
};

inline TemplateControl ReadControl(TemplateReader& reader) {
    reader.AlignToDword();
    TemplateControl control{};
    reader.Take<DWORD>();  // help id
    reader.Take<DWORD>();  // extended style
    control.style = reader.Take<DWORD>();
    const int x = reader.Take<short>();
    const int y = reader.Take<short>();
    const int width = reader.Take<short>();
    const int height = reader.Take<short>();
    control.place = {x, y, x + width, y + height};
    control.id = static_cast<int>(reader.Take<DWORD>());
    const std::wstring windowClass = reader.TakeTextOrNumber();
    control.windowClass = windowClass == L"#128"   ? L"Button"
                          : windowClass == L"#129" ? L"Edit"
                          : windowClass == L"#130" ? L"Static"
                          : windowClass == L"#133" ? L"ComboBox"
                                                   : windowClass;
    control.text = reader.TakeTextOrNumber();
    reader.Take<WORD>();  // no creation data
    return control;
}

/// The template of one language; nothing when the library has none.
inline std::optional<DialogTemplate> ReadTemplate(HMODULE module, const wchar_t* name, int language) {
    const HRSRC resource = FindResourceExW(module, MAKEINTRESOURCEW(5), name, static_cast<WORD>(language));
    if (resource == nullptr) {
        return std::nullopt;
    }
    TemplateReader reader(LockResource(LoadResource(module, resource)));
    DialogTemplate dialog{};
    EXPECT_EQ(reader.Take<WORD>(), 1);       // version
    EXPECT_EQ(reader.Take<WORD>(), 0xFFFF);  // extended
    reader.Take<DWORD>();
    reader.Take<DWORD>();
    dialog.style = reader.Take<DWORD>();
    const int count = reader.Take<WORD>();
    reader.Take<DWORD>();  // position
    dialog.width = reader.Take<short>();
    dialog.height = reader.Take<short>();
    EXPECT_EQ(reader.TakeTextOrNumber(), L"");  // menu
    EXPECT_EQ(reader.TakeTextOrNumber(), L"");  // class
    dialog.caption = reader.TakeText();
    dialog.pointSize = reader.Take<WORD>();
    reader.Take<DWORD>();  // weight, italic, character set
    dialog.font = reader.TakeText();
    for (int i = 0; i < count; ++i) {
        dialog.controls.push_back(ReadControl(reader));
    }
    return dialog;
}
