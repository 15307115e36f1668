#include "show/CheckupText.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "judge/Checkup.h"
#include "text/Columns.h"

namespace {

using Json = nlohmann::ordered_json;

std::string Advice(const std::vector<Finding>& findings, const std::string& device) {
    const auto problems = std::ranges::count(findings, Verdict::Problem, &Finding::verdict);
    if (problems == 0) {
        return "no problem found; go on with: oko-host monitor --device " + device;
    }
    return std::to_string(problems) + (problems == 1 ? " problem" : " problems") +
           " found: begin with the first, others may follow from it";
}

}  // namespace

std::vector<std::string> CheckupText(const std::vector<Finding>& findings, const std::string& device) {
    using enum Align;
    std::vector<std::vector<std::string>> cells;
    for (const Finding& finding : findings) {
        cells.push_back({VerdictName(finding.verdict), finding.check, finding.fact});
        if (!finding.next.empty()) {
            cells.push_back({"", "", "-> " + finding.next});
        }
    }
    std::vector<std::string> lines = FormatColumns(cells, {Left, Left, Left});
    lines.push_back(Advice(findings, device));
    return lines;
}

std::string CheckupJson(const std::vector<Finding>& findings, const std::string& device) {
    Json json{{"device", device}, {"problem", HasProblem(findings)}, {"findings", Json::array()}};
    for (const Finding& finding : findings) {
        json["findings"].push_back({{"check", finding.check},
                                    {"verdict", VerdictName(finding.verdict)},
                                    {"fact", finding.fact},
                                    {"next", finding.next}});
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}
