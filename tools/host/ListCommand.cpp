#include "ListCommand.h"

#include <array>
#include <iostream>

#include "Library.h"

int RunList(const std::filesystem::path& libraryFile) {
    const Library library(libraryFile);
    std::array<char, oko::kDeviceTextLength> type{};
    std::array<char, oko::kDeviceTextLength> name{};
    for (std::uint32_t index = 0;
         library.QueryPhysDevice()(index, nullptr, type.data(), oko::kDeviceTextLength, name.data(),
                                   oko::kDeviceTextLength, nullptr, 0, nullptr, 0) == oko::kSuccess;
         ++index) {
        std::cout << index << "  " << type.data() << "  " << name.data() << "\n";
    }
    return 0;
}
