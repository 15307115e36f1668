#include "check/Check.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "faults/Pattern.h"

namespace check {

std::vector<const Check*> AllChecks() {
    std::vector<const Check*> all;
    for (const auto group : {ExportChecks(), LifeChecks(), StartChecks(), ChannelChecks(), ReadFaultChecks(),
                             WriteFaultChecks(), SimulatorChecks()}) {
        for (const Check& check : group) {
            all.push_back(&check);
        }
    }
    return all;
}

std::vector<const Check*> ChooseChecks(const std::vector<const Check*>& checks, const std::vector<std::string>& only) {
    std::vector<const Check*> chosen;
    std::ranges::copy_if(checks, std::back_inserter(chosen), [&](const Check* check) {
        return only.empty() || std::ranges::any_of(only, [&](const std::string& pattern) {
                   return emulator::FitsPattern(check->name, pattern);
               });
    });
    return chosen;
}

const Check* FindCheck(std::string_view name) {
    const std::vector<const Check*> all = AllChecks();
    const auto found = std::ranges::find(all, name, &Check::name);
    return found != all.end() ? *found : nullptr;
}

}  // namespace check
