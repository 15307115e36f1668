#include "device/Library.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"
#include "platform/DynamicLibrary.h"

Library::Library(const std::filesystem::path& file)
    : m_library(file),
      m_queryPhysDevice(reinterpret_cast<oko::LibQueryPhysDeviceFunction>(m_library.Find("LibQueryPhysDevice"))),
      m_queryInterface(reinterpret_cast<oko::LibQueryInterfaceFunction>(m_library.Find("LibQueryInterface"))) {
    if (m_queryPhysDevice == nullptr || m_queryInterface == nullptr) {
        throw LibraryError(file.string() + " is not a device plug-in: its exports are missing");
    }
}

CDevApiInterface& Library::Device(const std::string& name) const {
    CDevApiInterface* device = nullptr;
    if (m_queryInterface(DeviceIndex(name), nullptr, &device) != oko::kSuccess || device == nullptr) {
        throw LibraryError("the library has no device " + std::to_string(DeviceIndex(name)));
    }
    return *device;
}

std::optional<DeviceTexts> Library::Texts(std::uint32_t index) const {
    std::array<char, oko::kDeviceTextLength> type{};
    std::array<char, oko::kDeviceTextLength> name{};
    constexpr std::int32_t kTextLength = oko::kDeviceTextLength - 1;  // a text that fills its buffer gets no terminator
    if (m_queryPhysDevice(index, nullptr, type.data(), kTextLength, name.data(), kTextLength, nullptr, 0, nullptr, 0) !=
        oko::kSuccess) {
        return std::nullopt;
    }
    return DeviceTexts{type.data(), name.data()};
}

std::uint32_t DeviceIndex(const std::string& name) {
    return name == "simulator" ? oko::kSimulatorDevice : oko::kRealDevice;
}

std::filesystem::path DefaultLibraryFile() { return ProgramFolder() / "OkoLabBoldLine.dll"; }
