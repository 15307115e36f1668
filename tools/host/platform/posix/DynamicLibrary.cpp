#include "platform/DynamicLibrary.h"

#include <dlfcn.h>

#include <filesystem>

#include "device/Library.h"

DynamicLibrary::DynamicLibrary(const std::filesystem::path& file) : m_hModule(dlopen(file.c_str(), RTLD_NOW)) {
    if (m_hModule == nullptr) {
        const char* const why = dlerror();  // NOLINT(concurrency-mt-unsafe): of this thread
        throw LibraryError("cannot load " + file.string() + " (" + why + ")");
    }
}

DynamicLibrary::~DynamicLibrary() { dlclose(m_hModule); }

void* DynamicLibrary::Find(const char* name) const noexcept { return dlsym(m_hModule, name); }

std::filesystem::path ProgramFolder() { return std::filesystem::read_symlink("/proc/self/exe").parent_path(); }
