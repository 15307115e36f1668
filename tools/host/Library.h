#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include "oko/LibQuery.h"

/// The plug-in's library cannot be loaded or is none; the text is for the user.
class LibraryError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The plug-in's library, loaded as an imaging application would: by name, through its two exports.
class Library {
 public:
    /// Throws LibraryError.
    explicit Library(const std::filesystem::path& file);
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    oko::LibQueryPhysDeviceFunction QueryPhysDevice() const noexcept { return m_queryPhysDevice; }

    /// The loaded module, which holds the dialogs.
    void* Module() const noexcept { return m_hModule; }

    /// The object of the device "simulator" or "incubator". Throws LibraryError when the library has none.
    CDevApiInterface& Device(const std::string& name) const;

 private:
    void* m_hModule;
    oko::LibQueryPhysDeviceFunction m_queryPhysDevice;
    oko::LibQueryInterfaceFunction m_queryInterface;
};

/// Where the library is when nobody says: beside this program.
std::filesystem::path DefaultLibraryFile();
