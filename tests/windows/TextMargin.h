#pragma once

#include <windows.h>

#include <string_view>

/// The pixels that a control of this class and style needs beside its text.
inline int TextMargin(std::wstring_view windowClass, DWORD style) {
    if (windowClass != L"Button") {
        return 0;
    }
    constexpr int kCheckBox = 18;
    constexpr int kPushButton = 2;  // its frame; the German search button has no more room
    constexpr int kGroupBox = 16;
    switch (style & BS_TYPEMASK) {
        case BS_AUTOCHECKBOX:
            return kCheckBox;
        case BS_GROUPBOX:
            return kGroupBox;
        default:
            return kPushButton;
    }
}
