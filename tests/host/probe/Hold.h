#pragma once

#include <filesystem>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

/// A file that one process holds while it lives: the system lets go of it when the process ends, however it ends.
class Hold {
 public:
#ifdef _WIN32
    explicit Hold(const std::filesystem::path& file)
        : m_file(CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {}
    ~Hold() { CloseHandle(m_file); }
    bool Works() const { return m_file != INVALID_HANDLE_VALUE; }
#else
    explicit Hold(const std::filesystem::path& file)
        : m_file(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600)),
          m_bWorks(m_file >= 0 && flock(m_file, LOCK_EX | LOCK_NB) == 0) {}
    ~Hold() { close(m_file); }
    bool Works() const { return m_bWorks; }
#endif
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

 private:
#ifdef _WIN32
    HANDLE m_file;
#else
    int m_file;
    bool m_bWorks;
#endif
};
