#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>

#include "oko/LibQuery.h"
#include "platform/DynamicLibrary.h"

/// The plug-in's library cannot be loaded or is none; the text is for the user.
class LibraryError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

struct DeviceTexts {
    std::string type;  // "Incubator"
    std::string name;  // "OKO-Lab bold line Simulator"
};

/// The plug-in's library, loaded as an imaging application would: by name, through its two exports.
class Library {
 public:
    /// Throws LibraryError.
    explicit Library(const std::filesystem::path& file);

    /// The loaded module, which holds the dialogs.
    void* Module() const noexcept { return m_library.Handle(); }

    /// The object of the device "simulator" or "incubator". Throws LibraryError when the library has none.
    CDevApiInterface& Device(const std::string& name) const;

    /// What the library calls the device at this index; nothing when it has none.
    std::optional<DeviceTexts> Texts(std::uint32_t index) const;

 private:
    DynamicLibrary m_library;
    oko::LibQueryPhysDeviceFunction m_queryPhysDevice;
    oko::LibQueryInterfaceFunction m_queryInterface;
};

/// The index of the device "simulator" or "incubator".
std::uint32_t DeviceIndex(const std::string& name);

/// Where the library is when nobody says: beside this program.
std::filesystem::path DefaultLibraryFile();
