#pragma once

#include <filesystem>

/// Prints the library's devices. Throws LibraryError.
int RunList(const std::filesystem::path& library);
