#include "platform/DynamicLibrary.h"

#include <windows.h>

#include <array>
#include <filesystem>
#include <string>

#include "device/Library.h"

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file) : m_hModule(LoadLibraryW(file.c_str())) {
    if (m_hModule == nullptr) {
        throw LibraryError("cannot load " + file.string() + " (system error " + std::to_string(GetLastError()) + ")");
    }
}

DynamicLibrary::~DynamicLibrary() { FreeLibrary(static_cast<HMODULE>(m_hModule)); }

void* DynamicLibrary::Find(const char* name) const noexcept {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(m_hModule), name));
}

std::filesystem::path ProgramFolder() {
    std::array<wchar_t, 32768> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    return std::filesystem::path(program.data()).parent_path();
}
