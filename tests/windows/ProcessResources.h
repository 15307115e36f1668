#pragma once

// clang-format off
#include "platform/win32/Windows.h"
#include <psapi.h>
#include <tlhelp32.h>
// clang-format on

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// What this process holds of the system, to be compared with what it held before.
struct ProcessResources {
    unsigned handles;  // highest place in their table
    int threads;
    unsigned windows;       // and other user objects: highest place in their table
    unsigned graphics;      // GDI objects, likewise
    std::size_t heapBytes;  // in use
    std::size_t privateBytes;
};

/// How many threads this process has.
inline int CountThreads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        count += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    }
    CloseHandle(snapshot);
    return count;
}

/// Where objects that are made now come to stand in the system's table: higher, when others were left in it.
/// (GetGuiResources and GetProcessHandleCount say 0 under Wine.)
template <class Make, class Destroy>
unsigned HighestPlace(Make make, Destroy destroy) {
    constexpr int kObjects = 64;
    std::vector<decltype(make())> objects;
    unsigned highest = 0;
    for (int i = 0; i < kObjects; ++i) {
        objects.push_back(make());
        highest = std::max(highest, static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(objects.back()) & 0xFFFFU));
    }
    std::ranges::for_each(objects, destroy);
    return highest;
}

inline std::size_t HeapBytesInUse() {
    std::array<HANDLE, 64> heaps{};
    const DWORD count = std::min<DWORD>(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()),
                                        static_cast<DWORD>(heaps.size()));
    std::size_t bytes = 0;
    for (DWORD i = 0; i < count; ++i) {
        PROCESS_HEAP_ENTRY entry{};
        HeapLock(heaps[i]);
        while (HeapWalk(heaps[i], &entry)) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
        }
        HeapUnlock(heaps[i]);
    }
    return bytes;
}

inline ProcessResources MeasureResources() {
    ProcessResources resources{};
    resources.threads = CountThreads();
    resources.handles = HighestPlace([] { return CreateEventW(nullptr, FALSE, FALSE, nullptr); }, CloseHandle);
    resources.windows = HighestPlace(
        [] { return CreateWindowExW(0, L"Static", L"", 0, 0, 0, 1, 1, HWND_MESSAGE, nullptr, nullptr, nullptr); },
        DestroyWindow);
    resources.graphics = HighestPlace([] { return CreateSolidBrush(7); }, DeleteObject);
    resources.heapBytes = HeapBytesInUse();
    PROCESS_MEMORY_COUNTERS memory{};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    resources.privateBytes = memory.PagefileUsage;
    return resources;
}
