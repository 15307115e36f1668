#include "check/CheckReport.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "check/Check.h"
#include "check/CheckRun.h"
#include "text/Json.h"
#include "text/Number.h"
#include "text/Words.h"

namespace check {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<CheckVerdict, 5> kVerdicts{CheckVerdict::Passed, CheckVerdict::Failed, CheckVerdict::Crashed,
                                                CheckVerdict::Hung, CheckVerdict::Skipped};

constexpr std::size_t kNameWidth = 34;

std::size_t CountOf(const std::vector<CheckResult>& results, CheckVerdict verdict) {
    return static_cast<std::size_t>(std::ranges::count(results, verdict, &CheckResult::verdict));
}

std::string Padded(std::string text, std::size_t width) {
    text.resize(std::max(text.size(), width), ' ');
    return text;
}

/// As XML's text and attributes have it. XML has no way to write most control characters, so they are shown as "\x01".
std::string Xml(const std::string& text) {
    // What is not UTF-8 is replaced, as in JSON.
    const std::string clean = nlohmann::json::parse(JsonQuoted(text)).get<std::string>();
    std::string xml;
    for (const char character : clean) {
        const auto byte = static_cast<unsigned char>(character);
        if (character == '&') {
            xml += "&amp;";
        } else if (character == '<') {
            xml += "&lt;";
        } else if (character == '>') {
            xml += "&gt;";
        } else if (character == '"') {
            xml += "&quot;";
        } else if (byte < 0x20 || byte == 0x7F) {
            xml += EscapedByte(character);
        } else {
            xml += character;
        }
    }
    // Two characters of UTF-8 that XML does not have.
    for (const std::string_view none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
        for (std::size_t place = xml.find(none); place != std::string::npos; place = xml.find(none)) {
            xml.replace(place, none.size(), "\xEF\xBF\xBD");
        }
    }
    return xml;
}

std::string Element(const CheckResult& result) {
    std::string element = "  <testcase classname=\"" + Xml(result.name.substr(0, result.name.find('/'))) +
                          "\" name=\"" + Xml(result.name) + "\" time=\"" + FormatFixed(result.seconds, 3) + "\"";
    if (result.verdict == CheckVerdict::Passed) {
        return element + "/>\n";
    }
    const std::string message = "message=\"" + Xml(result.reason) + "\"";
    element += ">\n    ";
    if (result.verdict == CheckVerdict::Skipped) {
        element += "<skipped " + message + "/>";
    } else {
        const std::string kind = result.verdict == CheckVerdict::Failed ? "failure" : "error";
        element.append("<").append(kind).append(" ").append(message).append(" type=\"");
        element.append(VerdictName(result.verdict)).append("\">").append(Xml(result.holds));
        element.append("</").append(kind).append(">");
    }
    return element + "\n  </testcase>\n";
}

}  // namespace

std::string CheckText(const CheckResult& result) {
    constexpr std::size_t kVerdictWidth = 8;
    const std::string line = Padded(VerdictName(result.verdict), kVerdictWidth) + " ";
    return result.reason.empty() ? line + result.name : line + Padded(result.name, kNameWidth) + " " + result.reason;
}

std::string CheckListing(const Check& check) { return Padded(check.name, kNameWidth) + " " + check.holds; }

std::string CheckCounts(const std::vector<CheckResult>& results) {
    std::string counts = std::to_string(results.size()) + (results.size() == 1 ? " check: " : " checks: ");
    bool first = true;
    for (const CheckVerdict verdict : kVerdicts) {
        if (const std::size_t count = CountOf(results, verdict); count != 0) {
            counts.append(first ? "" : ", ").append(std::to_string(count)).append(" ").append(VerdictName(verdict));
            first = false;
        }
    }
    return counts;
}

std::string CheckJson(const std::string& library, const std::vector<CheckResult>& results) {
    Json json{{"library", library}};
    for (const CheckVerdict verdict : kVerdicts) {
        json[VerdictName(verdict)] = CountOf(results, verdict);
    }
    json["checks"] = Json::array();
    for (const CheckResult& result : results) {
        json["checks"].push_back({{"name", result.name},
                                  {"device", result.device},
                                  {"verdict", VerdictName(result.verdict)},
                                  {"reason", result.reason},
                                  {"call", result.call},
                                  {"holds", result.holds},
                                  {"seconds", result.seconds}});
    }
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string CheckJunit(const std::string& library, const std::vector<CheckResult>& results) {
    double seconds = 0.0;
    for (const CheckResult& result : results) {
        seconds += result.seconds;
    }
    const auto count = [&](CheckVerdict verdict) { return CountOf(results, verdict); };
    std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"" + Xml(library) + "\" tests=\"" +
                      std::to_string(results.size()) + "\" failures=\"" + std::to_string(count(CheckVerdict::Failed)) +
                      "\" errors=\"" + std::to_string(count(CheckVerdict::Crashed) + count(CheckVerdict::Hung)) +
                      "\" skipped=\"" + std::to_string(count(CheckVerdict::Skipped)) + "\" time=\"" +
                      FormatFixed(seconds, 3) + "\">\n";
    for (const CheckResult& result : results) {
        xml += Element(result);
    }
    return xml + "</testsuite>\n";
}

}  // namespace check
