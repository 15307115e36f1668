#pragma once

#include <filesystem>

/// A library loaded by its file's name. Released with its owner.
class DynamicLibrary {
 public:
    /// Throws LibraryError (device/Library.h).
    explicit DynamicLibrary(const std::filesystem::path& file);
    ~DynamicLibrary();
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;

    /// The export's address, or null.
    void* Find(const char* name) const noexcept;

    /// What the system calls it.
    void* Handle() const noexcept { return m_hModule; }

 private:
    void* m_hModule;
};

/// The folder that this program's file stands in.
std::filesystem::path ProgramFolder();
