#include "link/ServerDiscovery.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cwchar>
#include <string>
#include <vector>

#include "Fixture.h"
#include "fakes/ScriptedPlatform.h"
#include "platform/FileSearch.h"

namespace {

const std::wstring kList32 = L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
const std::wstring kList = L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall";
constexpr std::uint32_t kOrdinaryFile = 0x20;

class ServerDiscoveryTests : public DeviceTest {
 protected:
    void Install(const std::wstring& list, const std::wstring& key, const std::wstring& name,
                 const std::wstring& location) {
        platform.registry.Set(list + L"\\" + key, L"DisplayName", RegistryValue::Text(name));
        platform.registry.Set(list + L"\\" + key, L"InstallLocation", RegistryValue::Text(location));
    }

    /// The folder that is found, or "(none)".
    std::wstring Location() {
        FolderText folder{};
        return FindServerInstallLocation(&folder) ? std::wstring(folder.data()) : L"(none)";
    }

    /// The program that is found in `folder`, or "(none)".
    std::wstring Executable(const wchar_t* folder) {
        ExecutableText name{};
        return FindServerExecutable(folder, name) ? std::wstring(name.data()) : L"(none)";
    }
};

TEST_F(ServerDiscoveryTests, InstallLocation_NoListAtAll_IsNotFound) { EXPECT_EQ(Location(), L"(none)"); }

TEST_F(ServerDiscoveryTests, InstallLocation_EmptyList_IsNotFoundAndClosed) {
    platform.registry.AddKey(kList);
    EXPECT_EQ(Location(), L"(none)");
    EXPECT_EQ(platform.registry.OpenKeys(), 0U);
}

TEST_F(ServerDiscoveryTests, InstallLocation_InThe32BitList_IsFound) {
    Install(kList32, L"{1}", L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_Without32BitList_IsFoundInTheOther) {
    Install(kList, L"{1}", L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_32BitListExists_OtherIsNotSearched) {
    platform.registry.AddKey(kList32);
    Install(kList, L"{1}", L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_EQ(Location(), L"(none)");
    for (const std::wstring& call : platform.registry.Calls()) {
        EXPECT_NE(call, L"open " + kList);
    }
}

TEST_F(ServerDiscoveryTests, InstallLocation_DisplayNameWithVersion_Matches) {
    Install(kList32, L"{1}", L"OKO-Control Server 2.1.7", L"D:\\OKO\\");
    EXPECT_EQ(Location(), L"D:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_OtherDisplayNames_DoNotMatch) {
    Install(kList32, L"{1}", L"OKO-Control Serve", L"C:\\1\\");
    Install(kList32, L"{2}", L"oko-control server", L"C:\\2\\");
    Install(kList32, L"{3}", L"The OKO-Control Server", L"C:\\3\\");
    Install(kList32, L"{4}", L"", L"C:\\4\\");
    EXPECT_EQ(Location(), L"(none)");
}

TEST_F(ServerDiscoveryTests, InstallLocation_ServerBehindOtherPrograms_IsFound) {
    Install(kList32, L"A", L"Another program", L"C:\\A\\");
    platform.registry.AddKey(kList32 + L"\\B");  // without values
    Install(kList32, L"C", L"OKO-Control Server", L"C:\\OKO\\");
    Install(kList32, L"D", L"OKO-Control Server", L"C:\\Second\\");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_ServerWithoutLocation_SearchGoesOn) {
    platform.registry.Set(kList32 + L"\\A", L"DisplayName", RegistryValue::Text(L"OKO-Control Server"));
    Install(kList32, L"B", L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_ValuesLongerThan260Bytes_AreSkipped) {
    // 129 characters and the terminator are 260 bytes.
    const std::wstring fits = L"C:\\" + std::wstring(126, L'x');
    Install(kList32, L"A", L"OKO-Control Server" + std::wstring(112, L' '), L"C:\\LongName\\");
    Install(kList32, L"B", L"OKO-Control Server", fits + L"x");
    EXPECT_EQ(Location(), L"(none)");
    Install(kList32, L"C", L"OKO-Control Server" + std::wstring(111, L' '), fits);
    EXPECT_EQ(Location(), fits);
}

TEST_F(ServerDiscoveryTests, InstallLocation_KeyThatCannotBeOpened_IsSkipped) {
    Install(kList32, L"A", L"OKO-Control Server", L"C:\\A\\");
    Install(kList32, L"B", L"OKO-Control Server", L"C:\\OKO\\");
    platform.registry.Deny(kList32 + L"\\A");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_KeyWithTheLongestName_IsFound) {
    Install(kList32, std::wstring(259, L'k'), L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
}

TEST_F(ServerDiscoveryTests, InstallLocation_NullFolder_OnlyTells) {
    Install(kList32, L"{1}", L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_TRUE(FindServerInstallLocation(nullptr));
}

TEST_F(ServerDiscoveryTests, InstallLocation_FoundOrNot_EveryKeyIsClosed) {
    Install(kList32, L"A", L"Another program", L"C:\\A\\");
    Install(kList32, L"B", L"OKO-Control Server", L"C:\\OKO\\");
    EXPECT_EQ(Location(), L"C:\\OKO\\");
    EXPECT_EQ(platform.registry.OpenKeys(), 0U);
}

TEST_F(ServerDiscoveryTests, Executable_SearchPattern_ReplacesAMissingSeparator) {
    struct Case {
        const wchar_t* folder;
        const wchar_t* pattern;
    };
    for (const Case& row : {Case{L"C:\\OKO\\", L"C:\\OKO\\*"}, Case{L"C:/OKO/", L"C:/OKO/*"},
                            Case{L"C:\\OKO", L"C:\\OK\\*"}, Case{L"X", L"\\*"}}) {
        SCOPED_TRACE(row.folder);
        EXPECT_EQ(Executable(row.folder), L"(none)");
        EXPECT_EQ(platform.files.Patterns().back(), row.pattern);
    }
    EXPECT_EQ(platform.files.OpenSearches(), 0U);
}

TEST_F(ServerDiscoveryTests, Executable_LongestFolder_IsSearchedWhole) {
    const std::wstring folder = L"C:\\" + std::wstring(kFolderLength - 5, L'f') + L"\\";
    ASSERT_EQ(folder.size(), kFolderLength - 1);
    platform.files.Answer(folder + L"*", {{L"OKO-Control.exe"}});
    EXPECT_EQ(Executable(folder.c_str()), L"OKO-Control.exe");
}

TEST_F(ServerDiscoveryTests, Executable_EmptyFolder_IsNotSearched) {
    EXPECT_EQ(Executable(L""), L"(none)");
    EXPECT_TRUE(platform.files.Patterns().empty());
}

TEST_F(ServerDiscoveryTests, Executable_Names_AreAcceptedByLengthStartAndEnd) {
    struct Case {
        const wchar_t* name;
        std::uint32_t attributes;
        bool accepted;
    };
    const std::vector<Case> cases{
        {L"OKO-Control.exe", kOrdinaryFile, true},
        {L"OKO-Control Server.exe", kOrdinaryFile, true},
        {L"OKO-Control", kOrdinaryFile, false},
        {L"OKO-Control.ex", kOrdinaryFile, false},
        {L"OKO-Control.EXE", kOrdinaryFile, false},
        {L"oko-control.exe", kOrdinaryFile, false},
        {L"An OKO-Control.exe", kOrdinaryFile, false},
        {L"OKO-Contr.exe", kOrdinaryFile, false},
        {L"OKO-Control.exe", kDirectoryAttributes, false},
        {L"OKO-Control.exe", kDirectoryAttributes | 1U, true},  // a read-only folder passes the name test
        {L"OKO-Control.exe", 0, true},
    };
    for (const Case& row : cases) {
        platform.files.Answer(L"C:\\OKO\\*", {{row.name, row.attributes}});
        SCOPED_TRACE(std::string(row.name, row.name + std::wcslen(row.name)));
        EXPECT_EQ(Executable(L"C:\\OKO\\"), row.accepted ? row.name : L"(none)");
    }
}

TEST_F(ServerDiscoveryTests, Executable_SeveralEntries_FirstThatFitsIsTaken) {
    platform.files.Answer(L"C:\\OKO\\*", {{L".", kDirectoryAttributes},
                                          {L"..", kDirectoryAttributes},
                                          {L"readme.txt"},
                                          {L"OKO-Control B.exe"},
                                          {L"OKO-Control A.exe"}});
    EXPECT_EQ(Executable(L"C:\\OKO\\"), L"OKO-Control B.exe");
    EXPECT_EQ(platform.files.OpenSearches(), 0U);
}

TEST_F(ServerDiscoveryTests, Executable_LongestNames_AreCutAtTheBuffer) {
    const std::wstring name = L"OKO-Control" + std::wstring(260, L'x') + L".exe";
    platform.files.Answer(L"C:\\OKO\\*", {{name}});
    EXPECT_EQ(Executable(L"C:\\OKO\\"), name.substr(0, kExecutableLength - 1));
}

}  // namespace
