#include "Library.h"

#include <windows.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "oko/CDevApiInterface.h"
#include "oko/LibQuery.h"
#include "oko/Result.h"

namespace {

HMODULE Load(const std::filesystem::path& file) {
    const HMODULE module = LoadLibraryW(file.c_str());
    if (module == nullptr) {
        throw LibraryError("cannot load " + file.string() + " (system error " + std::to_string(GetLastError()) + ")");
    }
    return module;
}

/// GetProcAddress with the export's own type.
template <class Function>
Function Find(void* module, const char* name) {
    const FARPROC address = GetProcAddress(static_cast<HMODULE>(module), name);
    return reinterpret_cast<Function>(reinterpret_cast<void*>(address));  // NOLINT(bugprone-casting-through-void)
}

}  // namespace

Library::Library(const std::filesystem::path& file)
    : m_hModule(Load(file)),
      m_queryPhysDevice(Find<oko::LibQueryPhysDeviceFunction>(m_hModule, "LibQueryPhysDevice")),
      m_queryInterface(Find<oko::LibQueryInterfaceFunction>(m_hModule, "LibQueryInterface")) {
    if (m_queryPhysDevice == nullptr || m_queryInterface == nullptr) {
        FreeLibrary(static_cast<HMODULE>(m_hModule));
        throw LibraryError(file.string() + " is not a device plug-in: its exports are missing");
    }
}

Library::~Library() { FreeLibrary(static_cast<HMODULE>(m_hModule)); }

CDevApiInterface& Library::Device(const std::string& name) const {
    const std::uint32_t index = name == "simulator" ? oko::kSimulatorDevice : oko::kRealDevice;
    CDevApiInterface* device = nullptr;
    if (m_queryInterface(index, nullptr, &device) != oko::kSuccess || device == nullptr) {
        throw LibraryError("the library has no device " + std::to_string(index));
    }
    return *device;
}

std::filesystem::path DefaultLibraryFile() {
    std::array<wchar_t, 32768> program{};
    GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size()));
    return std::filesystem::path(program.data()).replace_filename(L"OkoLabBoldLine.dll");
}
