#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

/// A file cannot be opened, read or written; the text is for the user.
class FileError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// A file that only grows. Nothing is held back in this program: what was taken is the system's, whatever becomes of
/// us.
class GrowingFile {
 public:
    enum class Mode { Create, Append };  // Create: an error when a file of that name is there

    /// Throws FileError.
    GrowingFile(const std::filesystem::path& file, Mode mode);
    ~GrowingFile();
    GrowingFile(const GrowingFile&) = delete;
    GrowingFile& operator=(const GrowingFile&) = delete;

    /// Returns how many of the bytes the system took; fewer than all of them when the disk is full, say.
    std::size_t Write(std::string_view bytes);

    /// Why the last Write took fewer: "No space left on device".
    const std::string& Problem() const noexcept { return m_problem; }

 private:
    std::intptr_t m_file;  // what the system calls it
    std::string m_problem;
};
