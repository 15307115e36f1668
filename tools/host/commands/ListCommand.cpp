#include "commands/ListCommand.h"

#include <cstdint>
#include <filesystem>
#include <iostream>

#include "device/Library.h"

int RunList(const std::filesystem::path& libraryFile) {
    const Library library(libraryFile);
    std::uint32_t index = 0;
    for (auto texts = library.Texts(index); texts; texts = library.Texts(++index)) {
        std::cout << index << "  " << texts->type << "  " << texts->name << "\n";
    }
    return 0;
}
