// The server: where it is installed, whether it runs, who has its port and what it answers.

// clang-format off: in this order alone
#include <winsock2.h>
#include <windows.h>
#include <iphlpapi.h>
#include <tlhelp32.h>
// clang-format on

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/SystemFacts.h"
#include "platform/Now.h"
#include "platform/SystemFacts.h"
#include "text/Text.h"

namespace {

constexpr u_short kServerPort = 60000;

/// A key of the registry, or none.
class Key {
 public:
    Key(HKEY parent, const std::wstring& path) {
        if (RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, &m_hKey) != ERROR_SUCCESS) {
            m_hKey = nullptr;
        }
    }
    ~Key() {
        if (m_hKey != nullptr) {
            RegCloseKey(m_hKey);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;

    bool IsOpen() const { return m_hKey != nullptr; }
    HKEY Get() const { return m_hKey; }

    std::wstring Subkey(DWORD index) const {
        std::array<wchar_t, 260> name{};
        return RegEnumKeyW(m_hKey, index, name.data(), static_cast<DWORD>(name.size())) == ERROR_SUCCESS ? name.data()
                                                                                                         : L"";
    }

    /// The library reads with room for 260 bytes; what is longer it does not see.
    std::optional<std::wstring> Text(const wchar_t* name) const {
        constexpr DWORD kRoom = 260;
        std::array<wchar_t, kRoom / sizeof(wchar_t) + 1> text{};
        DWORD size = kRoom;
        const LSTATUS status =
            RegQueryValueExW(m_hKey, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text.data()), &size);
        return status == ERROR_SUCCESS ? std::optional<std::wstring>(text.data()) : std::nullopt;
    }

 private:
    HKEY m_hKey = nullptr;
};

std::optional<std::wstring> FolderInList(const Key& list) {
    constexpr std::wstring_view kServer = L"OKO-Control Server";
    for (DWORD index = 0;; ++index) {
        const std::wstring name = list.Subkey(index);
        if (name.empty()) {
            return std::nullopt;
        }
        const Key program(list.Get(), name);
        const auto shown = program.IsOpen() ? program.Text(L"DisplayName") : std::nullopt;
        if (shown && shown->starts_with(kServer)) {
            if (const auto folder = program.Text(L"InstallLocation")) {
                return folder;
            }
        }
    }
}

/// The first program that the library would take there. It replaces the folder's last character by a separator.
std::wstring ProgramIn(std::wstring folder) {
    if (folder.empty()) {
        return {};
    }
    if (folder.back() != L'\\' && folder.back() != L'/') {
        folder.back() = L'\\';
    }
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileW((folder + L"*").c_str(), &entry);
    std::wstring found;
    for (BOOL more = search != INVALID_HANDLE_VALUE ? TRUE : FALSE; more != FALSE && found.empty();
         more = FindNextFileW(search, &entry)) {
        const std::wstring_view name = entry.cFileName;
        const bool fits = name.size() >= 12 && name.starts_with(L"OKO-Control") && name.ends_with(L".exe");
        found = fits && entry.dwFileAttributes != FILE_ATTRIBUTE_DIRECTORY ? name : L"";
    }
    if (search != INVALID_HANDLE_VALUE) {
        FindClose(search);
    }
    return found;
}

std::vector<RunningProgram> RunningPrograms() {
    std::vector<RunningProgram> programs;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return programs;
    }
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Process32FirstW(snapshot, &entry); more != FALSE; more = Process32NextW(snapshot, &entry)) {
        programs.push_back({entry.th32ProcessID, ToUtf8(entry.szExeFile)});
    }
    CloseHandle(snapshot);
    return programs;
}

/// Windows' sockets while the object lives.
class Sockets {
 public:
    Sockets() {
        WSADATA data{};
        WSAStartup(MAKEWORD(2, 2), &data);
        m_socket = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    }
    ~Sockets() {
        closesocket(m_socket);
        WSACleanup();
    }
    Sockets(const Sockets&) = delete;
    Sockets& operator=(const Sockets&) = delete;

    SOCKET Get() const { return m_socket; }

 private:
    SOCKET m_socket = INVALID_SOCKET;
};

bool WaitsForReading(SOCKET socket, double seconds) {
    fd_set set{};
    FD_ZERO(&set);
    FD_SET(socket, &set);
    const auto whole = static_cast<long>(seconds);
    timeval time{whole, static_cast<long>((seconds - static_cast<double>(whole)) * 1e6)};
    return select(0, &set, nullptr, nullptr, &time) > 0;
}

}  // namespace

Fact<ServerInstallation> FindServerInstallation() {
    const Key first(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
    const Key second(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
    ServerInstallation installation;
    const Key& searched = first.IsOpen() ? first : second;
    if (!searched.IsOpen()) {
        return Fact<ServerInstallation>::Of(installation);
    }
    if (const auto folder = FolderInList(searched)) {
        installation.entered = true;
        installation.folder = ToUtf8(*folder);
        installation.program = ToUtf8(ProgramIn(*folder));
    } else {
        installation.inOtherList = first.IsOpen() && second.IsOpen() && FolderInList(second).has_value();
    }
    return Fact<ServerInstallation>::Of(installation);
}

Fact<std::vector<RunningProgram>> RunningServers() {
    std::vector<RunningProgram> servers = RunningPrograms();
    std::erase_if(servers, [](const RunningProgram& program) { return !IsServerName(program.name); });
    return Fact<std::vector<RunningProgram>>::Of(servers);
}

Fact<PortHolder> HolderOfServerPort() {
    ULONG size = 0;
    GetExtendedUdpTable(nullptr, &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0);
    constexpr ULONG kGrowth = 4096;  // it may have grown in between
    size += kGrowth;
    std::vector<MIB_UDPTABLE_OWNER_PID> table(size / sizeof(MIB_UDPTABLE_OWNER_PID) + 1);
    if (GetExtendedUdpTable(table.data(), &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0) != NO_ERROR) {
        return Fact<PortHolder>::Unknown("the system does not tell who has which port");
    }
    const MIB_UDPROW_OWNER_PID* const rows = table.front().table;
    const auto* const end = rows + table.front().dwNumEntries;
    const auto* const found = std::find_if(rows, end, [](const MIB_UDPROW_OWNER_PID& row) {
        const bool reached = row.dwLocalAddr == htonl(INADDR_ANY) || row.dwLocalAddr == htonl(INADDR_LOOPBACK);
        return reached && static_cast<u_short>(row.dwLocalPort) == htons(kServerPort);
    });
    PortHolder holder;
    if (found != end) {
        holder.taken = true;
        holder.program.id = found->dwOwningPid;
        for (const RunningProgram& program : RunningPrograms()) {
            if (program.id == holder.program.id && program.id != 0) {
                holder.program.name = program.name;
            }
        }
    }
    return Fact<PortHolder>::Of(holder);
}

Fact<ServerAnswer> AskServer(const std::string& command, double withinSeconds) {
    const Sockets sockets;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kServerPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(sockets.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        send(sockets.Get(), command.data(), static_cast<int>(command.size()), 0) < 0) {
        return Fact<ServerAnswer>::Unknown("it cannot be asked (system error " + std::to_string(WSAGetLastError()) +
                                           ")");
    }
    const double begun = Now().seconds;
    ServerAnswer answer;
    if (WaitsForReading(sockets.Get(), withinSeconds)) {
        std::array<char, 2048> reply{};
        const int length = recv(sockets.Get(), reply.data(), static_cast<int>(reply.size()), 0);
        answer.kind = length < 0 ? AnswerKind::Refused : AnswerKind::Reply;
        answer.reply.assign(reply.data(), static_cast<std::size_t>(std::max(length, 0)));
    }
    answer.seconds = Now().seconds - begun;
    return Fact<ServerAnswer>::Of(answer);
}
