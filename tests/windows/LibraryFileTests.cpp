// The library as a file: what it exports and imports, and its size.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "LoadedLibrary.h"

namespace {

/// The library mapped as an image but not run; its tables can be read at their addresses.
class LibraryImage {
 public:
    LibraryImage() : m_hModule(LoadLibraryExW(LibraryFile().c_str(), nullptr, DONT_RESOLVE_DLL_REFERENCES)) {}
    ~LibraryImage() { FreeLibrary(m_hModule); }
    LibraryImage(const LibraryImage&) = delete;
    LibraryImage& operator=(const LibraryImage&) = delete;

    const IMAGE_NT_HEADERS& Headers() const {
        return *At<IMAGE_NT_HEADERS>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew));
    }

    template <class Table>
    const Table* Directory(int index) const {
        return At<Table>(Headers().OptionalHeader.DataDirectory[index].VirtualAddress);
    }

    template <class Table>
    const Table* At(DWORD address) const {
        return reinterpret_cast<const Table*>(reinterpret_cast<const char*>(m_hModule) + address);
    }

 private:
    HMODULE m_hModule;
};

TEST(LibraryFileTests, Exports_AreExactlyTheTwoUndecoratedNames) {
    const LibraryImage image;
    const auto* const exports = image.Directory<IMAGE_EXPORT_DIRECTORY>(IMAGE_DIRECTORY_ENTRY_EXPORT);
    std::vector<std::string> names;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        names.emplace_back(image.At<char>(image.At<DWORD>(exports->AddressOfNames)[i]));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"LibQueryInterface", "LibQueryPhysDevice"}));
    EXPECT_EQ(exports->NumberOfFunctions, 2U);
}

TEST(LibraryFileTests, Imports_AreSystemLibrariesOnly) {
    const std::vector<std::string> system{"KERNEL32.dll", "USER32.dll",  "ADVAPI32.dll", "SHELL32.dll",
                                          "COMCTL32.dll", "WSOCK32.dll", "msvcrt.dll"};
    const LibraryImage image;
    int count = 0;
    for (const auto* import = image.Directory<IMAGE_IMPORT_DESCRIPTOR>(IMAGE_DIRECTORY_ENTRY_IMPORT); import->Name != 0;
         ++import, ++count) {
        const char* const name = image.At<char>(import->Name);
        EXPECT_TRUE(std::ranges::any_of(system, [&](const std::string& allowed) {
            return _stricmp(allowed.c_str(), name) == 0;
        })) << name;
    }
    EXPECT_GE(count, 4);
}

/// The library's bytes as they lie in the file.
std::string LibraryBytes() {
    std::ifstream file{std::filesystem::path(LibraryFile()), std::ios::binary};
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(LibraryFileTests, Addresses_AreRandomAndDataIsNotRun) {
    const LibraryImage image;
    const WORD characteristics = image.Headers().OptionalHeader.DllCharacteristics;
    EXPECT_TRUE(characteristics & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
    EXPECT_TRUE(characteristics & IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA);
    EXPECT_TRUE(characteristics & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
    // Without relocations the loader could put it at its preferred address only.
    EXPECT_GT(image.Headers().OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_BASERELOC].Size, 0U);
    EXPECT_FALSE(image.Headers().FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
}

#ifdef __GNUC__  // what these three look for is this compiler's way
/// Where the guard of the stacks lies in the library, found by the value that the file gives it.
DWORD StackGuardAddress() {
    constexpr std::uint64_t kInFile = 0x2B99'2DDF'A232;
    const LibraryImage image;
    const auto* section = IMAGE_FIRST_SECTION(&image.Headers());
    while (std::memcmp(section->Name, ".data", sizeof ".data") != 0) {
        ++section;
    }
    const std::string_view data(image.At<char>(section->VirtualAddress), section->Misc.VirtualSize);
    std::array<char, sizeof kInFile> bytes{};
    std::memcpy(bytes.data(), &kInFile, bytes.size());
    const std::size_t offset = data.find(std::string_view(bytes.data(), bytes.size()));
    EXPECT_NE(offset, std::string_view::npos);
    return section->VirtualAddress + static_cast<DWORD>(offset);
}

TEST(LibraryFileTests, StackGuard_IsAnotherOneAtEachLoad) {
    const DWORD address = StackGuardAddress();
    std::set<std::uint64_t> guards;
    constexpr int kLoads = 5;
    for (int i = 0; i < kLoads; ++i) {
        const HMODULE library = LoadLibraryW(LibraryFile().c_str());
        guards.insert(*reinterpret_cast<const std::uint64_t*>(reinterpret_cast<const char*>(library) + address));
        FreeLibrary(library);
    }
    EXPECT_EQ(guards.size(), std::size_t{kLoads});
}

TEST(LibraryFileTests, IndexOutOfRange_IsNoticed) {
    EXPECT_NE(LibraryBytes().find("__n < this->size()"), std::string::npos);
}

TEST(LibraryFileTests, FileHeader_TellsNoTimeOfDay) {
    const LibraryImage image;
    EXPECT_EQ(image.Headers().FileHeader.TimeDateStamp, 0U);
}
#endif

TEST(LibraryFileTests, Size_IsAtMost600Kilobytes) {
    EXPECT_LE(std::filesystem::file_size(LibraryFile()), 600U * 1024U);
}

}  // namespace
