#pragma once

#include <string>
#include <string_view>

/// The few parts of JSON that are written piece by piece: long tables would take a multiple of their size as a tree of
/// values first.

/// The shortest decimal form that reads back as the same number; null for what is not finite.
void AppendJson(std::string& json, float number);
void AppendJson(std::string& json, double number);

/// `text` in quotes. What is not UTF-8 in it becomes U+FFFD: one odd name must not make a whole reply unreadable.
std::string JsonQuoted(std::string_view text);
