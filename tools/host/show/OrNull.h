#pragma once

#include <nlohmann/json.hpp>
#include <optional>

/// JSON's null for what there is none of.
template <class Value>
nlohmann::ordered_json OrNull(const std::optional<Value>& value) {
    return value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json(nullptr);
}
