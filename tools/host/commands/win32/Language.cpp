#include "commands/win32/Language.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "Languages.h"
#include "device/Library.h"
#include "text/Text.h"

namespace {

/// "de" of "de-DE"; the whole name where more than one language begins so.
std::string NameOnTheCommandLine(std::wstring_view systemName) {
    const std::wstring_view first = systemName.substr(0, systemName.find(L'-') + 1);
    const auto alike =
        std::ranges::count_if(kDialogLanguages, [&](std::wstring_view other) { return other.starts_with(first); });
    return ToUtf8(alike > 1 ? systemName : first.substr(0, first.size() - 1));
}

}  // namespace

std::vector<std::string> DialogLanguages() {
    std::vector<std::string> names(kDialogLanguages.size());
    std::ranges::transform(kDialogLanguages, names.begin(), NameOnTheCommandLine);
    return names;
}

bool ChooseDialogLanguage(const Library& library, const std::string& language) {
    const auto chosen = std::ranges::find(kDialogLanguages, language, NameOnTheCommandLine);
    if (chosen == kDialogLanguages.end()) {
        return false;
    }
    const std::wstring listOfOne = *chosen + std::wstring(1, L'\0');  // it ends in two zeros
    const LANGID id = LANGIDFROMLCID(LocaleNameToLCID(*chosen, 0));
    ULONG count = 0;
    SetThreadPreferredUILanguages(MUI_LANGUAGE_NAME, listOfOne.c_str(), &count);
    SetThreadUILanguage(id);
    // What these calls return says little: Wine accepts both and goes on as before. What counts is what it now finds.
    const auto module = static_cast<HMODULE>(library.Module());
    constexpr const wchar_t* kAnyDialog = L"INCUBATOR_CONFIGURATION";
    const auto dialogType = MAKEINTRESOURCEW(5);
    return FindResourceW(module, kAnyDialog, dialogType) == FindResourceExW(module, dialogType, kAnyDialog, id);
}
