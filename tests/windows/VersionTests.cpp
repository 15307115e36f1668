// The project's version, as the library's file and the programs show it.

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "ChildProcess.h"
#include "windows/LoadedLibrary.h"

namespace {

constexpr std::string_view kVersion = OKO_PROJECT_VERSION;

/// The library's version resource.
class VersionResource {
 public:
    VersionResource() {
        DWORD ignored = 0;
        m_block.resize(GetFileVersionInfoSizeW(LibraryFile().c_str(), &ignored));
        EXPECT_TRUE(GetFileVersionInfoW(LibraryFile().c_str(), 0, static_cast<DWORD>(m_block.size()), m_block.data()));
    }

    std::wstring Text(const std::wstring& name) const {
        const auto* const text = static_cast<const wchar_t*>(Value(L"\\StringFileInfo\\040904B0\\" + name));
        return text != nullptr ? text : L"";
    }

    VS_FIXEDFILEINFO Numbers() const {
        const auto* const numbers = static_cast<const VS_FIXEDFILEINFO*>(Value(L"\\"));
        return numbers != nullptr ? *numbers : VS_FIXEDFILEINFO{};
    }

 private:
    const void* Value(const std::wstring& name) const {
        void* value = nullptr;
        UINT length = 0;
        EXPECT_TRUE(VerQueryValueW(m_block.data(), name.c_str(), &value, &length));
        return value;
    }

    std::vector<char> m_block;
};

std::string Dotted(DWORD high, DWORD low) {
    return std::to_string(HIWORD(high)) + "." + std::to_string(LOWORD(high)) + "." + std::to_string(HIWORD(low));
}

std::string VersionAnsweredBy(const std::wstring& program) {
    const ChildProcess process(program, L"--version");
    EXPECT_EQ(process.ExitCode(), 0U);
    return process.Output();
}

TEST(VersionTests, VersionResource_NamesTheLibrary) {
    EXPECT_EQ(VersionResource().Text(L"OriginalFilename"), L"OkoLabBoldLine.dll");
}

TEST(VersionTests, VersionResource_HasTheProjectsVersion) {
    const VersionResource resource;
    const std::wstring version(kVersion.begin(), kVersion.end());
    EXPECT_EQ(resource.Text(L"FileVersion"), version);
    EXPECT_EQ(resource.Text(L"ProductVersion"), version);
    const VS_FIXEDFILEINFO numbers = resource.Numbers();
    EXPECT_EQ(Dotted(numbers.dwFileVersionMS, numbers.dwFileVersionLS), kVersion);
    EXPECT_EQ(Dotted(numbers.dwProductVersionMS, numbers.dwProductVersionLS), kVersion);
}

TEST(VersionTests, HostProgram_AnswersWithTheProjectsVersion) {
    EXPECT_EQ(VersionAnsweredBy(L"oko-host.exe"), "oko-host " + std::string(kVersion) + "\n");
}

TEST(VersionTests, Emulator_AnswersWithTheProjectsVersion) {
    EXPECT_EQ(VersionAnsweredBy(L"oko-control-emulator.exe"), "oko-control-emulator " + std::string(kVersion) + "\n");
}

}  // namespace
