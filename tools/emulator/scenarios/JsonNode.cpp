#include "scenarios/JsonNode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "incubator/Scenario.h"
#include "text/Number.h"
#include "text/Words.h"

namespace emulator {

namespace {

using Json = nlohmann::json;

/// A value as it stands in the file, cut where it is long.
std::string Excerpt(const Json& json) {
    constexpr std::size_t kLongest = 40;
    std::string text = json.dump(-1, ' ', true, Json::error_handler_t::replace);
    if (text.size() > kLongest) {
        text.resize(kLongest);
        text += "...";
    }
    return text;
}

bool IsWholeWithin(const Json& json, int least, int most) {
    if (json.is_number_unsigned()) {
        return json.get<std::uint64_t>() <= static_cast<std::uint64_t>(most) && json.get<std::int64_t>() >= least;
    }
    return json.is_number_integer() && json.get<std::int64_t>() >= least && json.get<std::int64_t>() <= most;
}

}  // namespace

void JsonNode::Fail(const std::string& what) const { throw ScenarioError(m_place + ": " + what); }

void JsonNode::Fail(const std::string& key, const std::string& what) const {
    throw ScenarioError(m_place + "/" + key + ": " + what);
}

void JsonNode::FailExpected(const std::string& key, const std::string& what) const {
    Fail(key, what + " is expected, not " + Excerpt(m_json.at(key)));
}

void JsonNode::ExpectMembers(const std::vector<std::string_view>& known) const {
    if (!m_json.is_object()) {
        Fail("an object is expected");
    }
    for (const auto& [key, value] : m_json.items()) {
        if (std::ranges::find(known, key) == known.end()) {
            Fail(InQuotes(key) + " is not known");
        }
    }
}

void JsonNode::Require(const std::string& key) const {
    if (!Has(key)) {
        Fail(InQuotes(key) + " is missing");
    }
}

void JsonNode::TakeWhole(const std::string& key, int& value, int least, int most) const {
    if (!Has(key)) {
        return;
    }
    if (!IsWholeWithin(m_json.at(key), least, most)) {
        FailExpected(key, "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    value = m_json.at(key).get<int>();
}

void JsonNode::TakeNumber(const std::string& key, double& value, double least, double most) const {
    if (!Has(key)) {
        return;
    }
    const Json& member = m_json.at(key);
    // A number that is not finite lies in no range, either.
    if (!member.is_number() || !(member.get<double>() >= least && member.get<double>() <= most)) {
        FailExpected(key, "a number from " + FormatPlain(least) + " to " + FormatPlain(most));
    }
    value = member.get<double>();
}

void JsonNode::TakeText(const std::string& key, std::string& value) const {
    if (!Has(key)) {
        return;
    }
    if (!m_json.at(key).is_string()) {
        FailExpected(key, "a text");
    }
    value = m_json.at(key).get<std::string>();
}

void JsonNode::ForEach(const std::string& key, const std::function<void(const JsonNode&)>& take) const {
    if (!Has(key)) {
        return;
    }
    const Json& list = m_json.at(key);
    if (!list.is_array()) {
        FailExpected(key, "a list");
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        take(JsonNode(list[i], m_place + "/" + key + "/" + std::to_string(i)));
    }
}

std::string JsonNode::Text() const {
    if (!m_json.is_string()) {
        Fail("a text is expected, not " + Excerpt(m_json));
    }
    return m_json.get<std::string>();
}

}  // namespace emulator
