// The page's files for the fuzzer, which need not be read anew in each run: all are alike to what is tried.

#include <string_view>

#include "page/Assets.h"

const Asset* FindAsset(std::string_view name) {
    static constexpr Asset kPage{"page.html", "text/html; charset=utf-8", "page"};
    return name == kPage.name || name == "page.css" ? &kPage : nullptr;
}
