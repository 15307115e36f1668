#include "ListCommand.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <iostream>

#include "Library.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"

int RunList(const std::filesystem::path& libraryFile) {
    const Library library(libraryFile);
    std::array<char, oko::kDeviceTextLength> type{};
    std::array<char, oko::kDeviceTextLength> name{};
    constexpr std::int32_t kTextLength = oko::kDeviceTextLength - 1;  // a text that fills its buffer gets no terminator
    for (std::uint32_t index = 0; library.QueryPhysDevice()(index, nullptr, type.data(), kTextLength, name.data(),
                                                            kTextLength, nullptr, 0, nullptr, 0) == oko::kSuccess;
         ++index) {
        std::cout << index << "  " << type.data() << "  " << name.data() << "\n";
    }
    return 0;
}
