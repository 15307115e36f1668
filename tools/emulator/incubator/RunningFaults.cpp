#include "incubator/RunningFaults.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>

#include "incubator/DeviceFault.h"

namespace emulator {

namespace {

constexpr double kSecondsInMinute = 60.0;

/// The same but for how long.
bool IsSame(DeviceFault left, const DeviceFault& right) {
    left.seconds = right.seconds;
    return left == right;
}

}  // namespace

int RunningFaults::Begin(const DeviceFault& fault, double now, double value) {
    const std::optional<double> until = fault.seconds ? std::optional(now + *fault.seconds) : std::nullopt;
    const auto found =
        std::ranges::find_if(m_entries, [&](const Entry& entry) { return IsSame(entry.running.fault, fault); });
    if (found == m_entries.end()) {
        // A sensor that drifts freezes where it has drifted to.
        const double frozen = value + DriftOf(fault.product.value_or(0), fault.device.value_or(0), now);
        m_entries.push_back({{++m_last, fault, now, until}, frozen});
        return m_last;
    }
    RunningFault& running = found->running;
    running.until = running.until && until ? std::optional(std::max(*running.until, *until)) : std::nullopt;
    return running.number;
}

bool RunningFaults::End(int number) {
    return std::erase_if(m_entries, [&](const Entry& entry) { return entry.running.number == number; }) > 0;
}

void RunningFaults::EndUntil(double now) {
    std::erase_if(m_entries, [&](const Entry& entry) { return entry.running.until && *entry.running.until <= now; });
}

std::optional<double> RunningFaults::NextEnd() const {
    std::optional<double> next;
    for (const Entry& entry : m_entries) {
        if (entry.running.until && (!next || *entry.running.until < *next)) {
            next = entry.running.until;
        }
    }
    return next;
}

bool RunningFaults::Has(DeviceFault::Kind kind, int product, int device) const {
    return std::ranges::any_of(m_entries,
                               [&](const Entry& entry) { return entry.running.fault.IsFor(kind, product, device); });
}

double RunningFaults::DriftOf(int product, int device, double now) const {
    double drift = 0.0;
    for (const Entry& entry : m_entries) {
        if (entry.running.fault.IsFor(DeviceFault::Kind::Drift, product, device)) {
            drift += entry.running.fault.amount * (now - entry.running.since) / kSecondsInMinute;
        }
    }
    return drift;
}

Shown RunningFaults::Read(int product, int device, double value, double now) {
    double spikes = 0.0;
    std::optional<double> frozen;
    for (Entry& entry : m_entries) {
        const DeviceFault& fault = entry.running.fault;
        if (fault.IsFor(DeviceFault::Kind::Freeze, product, device)) {
            frozen = entry.frozen;
        } else if (fault.IsFor(DeviceFault::Kind::Spike, product, device)) {
            entry.readings = entry.readings % fault.every + 1;
            spikes += entry.readings == fault.every ? fault.amount : 0.0;
        }
    }
    return {frozen.value_or(value + DriftOf(product, device, now) + spikes), frozen.has_value()};
}

std::vector<RunningFault> RunningFaults::List() const {
    std::vector<RunningFault> list;
    list.reserve(m_entries.size());
    std::ranges::transform(m_entries, std::back_inserter(list), &Entry::running);
    return list;
}

}  // namespace emulator
