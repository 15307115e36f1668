#pragma once

#include <optional>
#include <string>
#include <utility>

/// What a text means, or a sentence for people that says what to write instead.
template <class T>
struct Parsed {
    std::optional<T> value;
    std::string error;  // empty where there is a value

    static Parsed Of(T value) { return {std::move(value), {}}; }
    static Parsed Error(std::string sentence) { return {std::nullopt, std::move(sentence)}; }

    explicit operator bool() const { return value.has_value(); }
    // NOLINTBEGIN(bugprone-unchecked-optional-access): as with an optional, the caller asks first
    const T& operator*() const { return *value; }
    const T* operator->() const { return &*value; }
    // NOLINTEND(bugprone-unchecked-optional-access)
};
