#pragma once

#include <string_view>

/// A file of the page, put into the program when it is built.
struct Asset {
    std::string_view name;  // "page.css"
    std::string_view contentType;
    std::string_view bytes;
};

/// The file of that name, or null. "page.html" is the page itself; it names all others.
const Asset* FindAsset(std::string_view name);
