#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace emulator {

/// A part of a scenario's file and the path to it, which every complaint names. What throws, throws ScenarioError.
class JsonNode {
 public:
    JsonNode(const nlohmann::json& json, std::string place) : m_json(json), m_place(std::move(place)) {}

    [[noreturn]] void Fail(const std::string& what) const;

    /// The same about a member.
    [[noreturn]] void Fail(const std::string& key, const std::string& what) const;

    /// Complains about members that nobody reads: they are usually misspelt.
    void ExpectMembers(const std::vector<std::string_view>& known) const;

    /// Complains when a member is missing.
    void Require(const std::string& key) const;

    bool Has(const std::string& key) const { return m_json.contains(key); }

    /// Take a member into `value` when it is there. Nothing is cut or made to fit: what is no whole number, or out of
    /// its range, is refused.
    void TakeWhole(const std::string& key, int& value, int least, int most) const;
    void TakeNumber(const std::string& key, double& value, double least, double most) const;
    void TakeText(const std::string& key, std::string& value) const;

    /// Every element of the list under this key; none when it is not there.
    void ForEach(const std::string& key, const std::function<void(const JsonNode&)>& take) const;

    /// This part as a text.
    std::string Text() const;

    const std::string& Place() const { return m_place; }

 private:
    [[noreturn]] void FailExpected(const std::string& key, const std::string& what) const;

    const nlohmann::json& m_json;
    std::string m_place;
};

}  // namespace emulator
