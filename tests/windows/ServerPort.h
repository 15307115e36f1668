#pragma once

// clang-format off
#include "Processes.h"
#include "LoadedLibrary.h"
#include <gtest/gtest.h>
#include <iphlpapi.h>
// clang-format on

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

/// The emulator, and its installed copy.
inline constexpr std::array<std::wstring_view, 2> kServerPrograms{L"oko-control-emulator.exe",
                                                                  L"OKO-Control Emulator.exe"};

inline bool IsServerProgram(std::wstring_view name) {
    return std::ranges::find(kServerPrograms, name) != kServerPrograms.end();
}

/// The port that every server of the tests needs for itself.
inline constexpr u_short kServerPort = 60000;

/// The server's address: the loopback address and its port.
inline sockaddr_in ServerAddress() {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(kServerPort);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// False when somebody else has the port.
inline bool BindToServerPort(SOCKET socket) {
    const sockaddr_in address = ServerAddress();
    return bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

inline bool IsServerPortFree() {
    WSADATA data{};
    WSAStartup(MAKEWORD(2, 2), &data);
    const SOCKET probe = socket(AF_INET, SOCK_DGRAM, IPPROTO_UDP);
    const bool isFree = BindToServerPort(probe);
    closesocket(probe);
    WSACleanup();
    return isFree;
}

/// The process that has the port; 0 when nobody has it, or the system does not know, as Wine does not.
inline DWORD ServerPortProcess() {
    std::vector<MIB_UDPTABLE_OWNER_PID> table(1);
    ULONG size = 0;
    GetExtendedUdpTable(nullptr, &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0);
    table.resize(size / sizeof table.front() + 1);
    if (GetExtendedUdpTable(table.data(), &size, FALSE, AF_INET, UDP_TABLE_OWNER_PID, 0) != NO_ERROR) {
        return 0;
    }
    const MIB_UDPROW_OWNER_PID* const rows = table.front().table;
    const auto* const end = rows + table.front().dwNumEntries;
    const auto* const found =
        std::find_if(rows, end, [](const MIB_UDPROW_OWNER_PID& row) { return row.dwLocalPort == htons(kServerPort); });
    return found != end ? found->dwOwningPid : 0;
}

/// Who may have the port, for a failure's text: its process where the system knows it, else every server that runs.
inline std::string ServerPortOwners() {
    const DWORD owner = ServerPortProcess();
    std::string owners;
    for (const RunningProcess& running : RunningProcesses()) {
        if (running.id == owner || (owner == 0 && IsServerProgram(running.name))) {
            owners += (owners.empty() ? "" : ", ") + std::string(running.name.begin(), running.name.end()) +
                      " (process " + std::to_string(running.id) + ")";
        }
    }
    return owners.empty() ? "nobody that the system knows" : owners;
}

/// Before a server takes the port: an earlier one may still be on its way out.
inline void ExpectFreeServerPort() {
    EXPECT_TRUE(WaitUntil(IsServerPortFree)) << "port " << kServerPort << " belongs to " << ServerPortOwners();
}
