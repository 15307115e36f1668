// A read of the simulator: the library's own road from end to end, without Windows.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <vector>

#include "CountingAllocator.h"
#include "Row.h"
#include "channels/CDevApiInterface_Temperature_Impl.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/ScriptedPlatform.h"
#include "oko/LibQuery.h"

namespace {

void ReadSimulator(benchmark::State& state) {
    ScriptedPlatform platform;
    CDevApiInterface_Impl device(oko::kSimulatorDevice);
    if (device.Init(nullptr, nullptr) != oko::kSuccess) {
        state.SkipWithError("Init failed");
        return;
    }
    device.StopValueThread();

    double value = 0.0;
    for (auto _ : state) {
        device.m_pTemperature[0]->GetCurrentTemperature(&value);
        benchmark::DoNotOptimize(value);
    }

    constexpr int kCountedReads = 1000;
    StartCountingAllocations();
    for (int i = 0; i < kCountedReads; ++i) {
        device.m_pTemperature[0]->GetCurrentTemperature(&value);
    }
    state.counters["allocations"] = static_cast<double>(StopCountingAllocations()) / kCountedReads;
}
BENCHMARK(ReadSimulator)->Repetitions(15);

/// Turns the repetitions into rows of the table.
class RowReporter : public benchmark::BenchmarkReporter {
 public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                m_nanoseconds.push_back(run.GetAdjustedRealTime());
                m_dAllocations = run.counters.at("allocations");
            }
        }
    }

    /// False when nothing ran.
    bool PrintRows() {
        if (m_nanoseconds.empty()) {
            return false;
        }
        std::ranges::sort(m_nanoseconds);
        PrintRow("simulator read, allocations", Text(m_dAllocations, 3), m_dAllocations, "0", 0.0);
        PrintRow("simulator read, ns (native)", Text(m_nanoseconds[m_nanoseconds.size() / 2], 0) + " (" +
                                                    Text(m_nanoseconds.front(), 0) + " to " +
                                                    Text(m_nanoseconds.back(), 0) + ")");
        return true;
    }

 private:
    std::vector<double> m_nanoseconds;
    double m_dAllocations = 0.0;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    RowReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!reporter.PrintRows()) {
        std::fprintf(stderr, "bench: the simulator did not run\n");
        return 1;
    }
    return 0;
}
