#include "Language.h"

#include <windows.h>

#include <algorithm>
#include <array>

#include "Library.h"

namespace {

struct DialogLanguage {
    const char* name;
    LANGID id;
    const wchar_t* systemName;  // ends in two zeros: a list of one
};
constexpr std::array<DialogLanguage, 11> kLanguages{{
    {"cs", 1029, L"cs-CZ\0"},
    {"de", 1031, L"de-DE\0"},
    {"en", 1033, L"en-US\0"},
    {"fr", 1036, L"fr-FR\0"},
    {"it", 1040, L"it-IT\0"},
    {"ja", 1041, L"ja-JP\0"},
    {"pl", 1045, L"pl-PL\0"},
    {"ru", 1049, L"ru-RU\0"},
    {"id", 1057, L"id-ID\0"},
    {"zh", 2052, L"zh-CN\0"},
    {"es", 3082, L"es-ES\0"},
}};

}  // namespace

std::vector<std::string> DialogLanguages() {
    std::vector<std::string> names;
    for (const DialogLanguage& language : kLanguages) {
        names.emplace_back(language.name);
    }
    return names;
}

bool ChooseDialogLanguage(const Library& library, const std::string& language) {
    const auto chosen = std::ranges::find_if(kLanguages, [&](const auto& known) { return language == known.name; });
    if (chosen == kLanguages.end()) {
        return false;
    }
    ULONG count = 0;
    SetThreadPreferredUILanguages(MUI_LANGUAGE_NAME, chosen->systemName, &count);
    SetThreadUILanguage(chosen->id);
    // What these calls return says little: Wine accepts both and goes on as before. What counts is what it now finds.
    const auto module = static_cast<HMODULE>(library.Module());
    constexpr const wchar_t* kAnyDialog = L"INCUBATOR_CONFIGURATION";
    const auto dialogType = MAKEINTRESOURCEW(5);
    return FindResourceW(module, kAnyDialog, dialogType) == FindResourceExW(module, dialogType, kAnyDialog, chosen->id);
}
