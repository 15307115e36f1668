#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

/// What starting a process takes on Windows, whoever starts it.

/// Closed with its owner.
class OwnedHandle {
 public:
    explicit OwnedHandle(HANDLE handle = nullptr) : m_handle(handle) {}
    ~OwnedHandle() { Close(); }
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    OwnedHandle(OwnedHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, nullptr)) {}
    OwnedHandle& operator=(OwnedHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }

    HANDLE Get() const { return m_handle; }
    bool IsValid() const { return m_handle != nullptr && m_handle != INVALID_HANDLE_VALUE; }
    void Close() {
        if (IsValid()) {
            CloseHandle(std::exchange(m_handle, nullptr));
        }
    }

 private:
    HANDLE m_handle;
};

/// What a new process has as its three usual files. They can be inherited.
struct StandardHandles {
    HANDLE input;
    HANDLE output;
    HANDLE errors;
};

struct NewProcess {
    OwnedHandle process;
    OwnedHandle thread;
};

/// Starts the file in that folder, or in this one's, with these arguments (UTF-8), which its own splitting gives it
/// back as they are. It gets these handles and no others, no window, and no Ctrl+C of this console. Gives the system's
/// error.
DWORD StartNewProcess(const std::filesystem::path& file, const std::vector<std::string>& arguments,
                      const std::filesystem::path& folder, const StandardHandles& handles, DWORD flags,
                      NewProcess& started);
