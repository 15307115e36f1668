// What it costs a host to look whether the library has devices for it: load, ask for both names, unload.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>

#include "Library.h"
#include "Pairs.h"
#include "Row.h"
#include "oko/LibQuery.h"

namespace {

void LoadAndQuery() {
    const Library library(L"OkoLabBoldLine.dll");
    Require(library.IsLoaded(), "OkoLabBoldLine.dll could not be loaded");
    const auto query = library.Find<oko::LibQueryPhysDeviceFunction>("LibQueryPhysDevice");
    for (const std::uint32_t index : {oko::kRealDevice, oko::kSimulatorDevice}) {
        char type[oko::kDeviceTextLength];
        char name[oko::kDeviceTextLength];
        wchar_t wideName[oko::kDeviceTextLength];
        wchar_t wideName2[oko::kDeviceTextLength];
        Require(query(index, nullptr, type, oko::kDeviceTextLength, name, oko::kDeviceTextLength, wideName,
                      oko::kDeviceTextLength, wideName2, oko::kDeviceTextLength) == 0,
                "LibQueryPhysDevice failed");
    }
}

void LoadEmpty() {
    const Library library(L"oko-empty-library.dll");
    Require(library.IsLoaded(), "oko-empty-library.dll could not be loaded");
}

/// With so many loads in a block.
Ratio Measure(std::size_t loads) {
    return RatioOfPairs([&] { return Block(loads, [] { return Seconds(LoadAndQuery); }); },
                        [&] { return Block(loads, [] { return Seconds(LoadEmpty); }); });
}

}  // namespace

int main() {
    try {
        // This program has no windows: at first each load brings the system's own libraries with it.
        const Ratio alone = Measure(8);
        // A host with a user interface has them all.
        const Library common(L"comctl32.dll");
        const Library shell(L"shell32.dll");
        const Library sockets(L"wsock32.dll");
        const Ratio inHost = Measure(100);
        constexpr double kGoal = 1.5;
        PrintRow("load, query, unload / empty library", Text(inHost), inHost.median, "<= 1.5", kGoal);
        PrintRow("the same, loading system libraries too", Text(alone));
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "bench: %s\n", failure.what());
        return 1;
    }
    return 0;
}
