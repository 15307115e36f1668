#include "control/ControlTable.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"

namespace emulator {

namespace {

using Json = nlohmann::json;

constexpr std::string_view kWithin = " within ";

const ControlRequest& FindRequest(std::string_view name) {
    const auto* const found = std::ranges::find(kControlRequests, name, &ControlRequest::name);
    if (found == kControlRequests.end()) {
        std::string known;
        for (const ControlRequest& request : kControlRequests) {
            known += (known.empty() ? "" : ", ") + std::string(request.name);
        }
        throw ControlError(InQuotes(name) + " is no request; there are: " + known);
    }
    return *found;
}

Json ReadNumber(std::string_view text, const ControlMember& member) {
    const Parsed<double> number = ParseNumber(text);
    if (!number) {
        throw ControlError(InQuotes(member.name) + ": " + number.error);
    }
    const bool isWhole = member.kind == MemberKind::Whole && std::trunc(*number) == *number && std::abs(*number) < 1e9;
    return isWhole ? Json(static_cast<int>(*number)) : Json(*number);
}

/// The last seconds of "value 9 0 36.9 37.1 within 30", taken off the text.
std::string_view TakeWithin(std::string_view& text) {
    const std::size_t at = text.rfind(kWithin);
    if (at == std::string_view::npos) {
        return {};
    }
    const std::string_view seconds = TrimBlanks(text.substr(at + kWithin.size()));
    text = text.substr(0, at);
    return seconds.ends_with('s') ? seconds.substr(0, seconds.size() - 1) : seconds;
}

/// The words of a request as its members.
Json FromWords(std::string_view text) {
    text = TrimBlanks(text);
    const ControlRequest& request = FindRequest(TakeWord(text));
    Json json{{"do", request.name}};
    if (request.name == "wait") {
        if (const std::string_view seconds = TakeWithin(text); !seconds.empty()) {
            json["within"] = ReadNumber(seconds, request.members[1]);
        }
    }
    for (const ControlMember& member : request.members) {
        if (text.empty() || member.kind == MemberKind::None) {
            break;
        }
        const std::string_view word = member.kind == MemberKind::Rest ? text : TakeWord(text);
        if (member.kind == MemberKind::Rest) {
            text = {};
        }
        const bool isNumber = member.kind == MemberKind::Whole || member.kind == MemberKind::Number;
        json[std::string(member.name)] = isNumber ? ReadNumber(word, member) : Json(std::string(word));
    }
    if (!text.empty()) {
        throw ControlError(InQuotes(text) + " is too much; as in " + InQuotes(request.example));
    }
    return json;
}

bool Fits(const Json& value, MemberKind kind) {
    switch (kind) {
        case MemberKind::Whole:
            return value.is_number_integer() && value >= -1'000'000'000 && value <= 1'000'000'000;
        case MemberKind::Number:
            return value.is_number();
        case MemberKind::Word:
        case MemberKind::Rest:
            return value.is_string() || value.is_number();
        case MemberKind::None:
            break;
    }
    return false;
}

void CheckMembers(const Json& json) {
    if (!json.contains("do") || !json["do"].is_string()) {
        throw ControlError("\"do\" is missing: what is to be done");
    }
    const ControlRequest& request = FindRequest(json["do"].get<std::string>());
    const auto find = [&](std::string_view key) {
        return std::ranges::find(request.members, key, &ControlMember::name);
    };
    for (const auto& [key, value] : json.items()) {
        const auto* const member = find(key);
        if (key == "do" || key == "id") {
            continue;
        }
        if (member == request.members.end() || member->kind == MemberKind::None) {
            throw ControlError(InQuotes(key) + " is not known to " + InQuotes(request.name));
        }
        if (!Fits(value, member->kind)) {
            throw ControlError(InQuotes(key) + " is not of the right form; as in " + InQuotes(request.example));
        }
    }
    for (const ControlMember& member : request.members) {
        const bool optional = !member.needed || (request.name == "set" && member.name == "to");
        if (member.kind != MemberKind::None && !optional && !json.contains(member.name)) {
            throw ControlError(InQuotes(member.name) + " is missing; as in " + InQuotes(request.example));
        }
    }
}

}  // namespace

Json ReadRequest(std::string_view line) {
    Json json;
    if (TrimBlanks(line).starts_with('{')) {
        json = Json::parse(line, nullptr, false);
        if (!json.is_object()) {
            throw ControlError("this is no JSON object");
        }
    } else {
        json = FromWords(line);
    }
    CheckMembers(json);
    return json;
}

std::string ControlHelp() {
    std::size_t width = 0;
    for (const ControlRequest& request : kControlRequests) {
        width = std::max(width, request.example.size());
    }
    std::string help;
    for (const ControlRequest& request : kControlRequests) {
        help.append("  ").append(request.example).append(width - request.example.size() + 2, ' ');
        help.append(request.description).append("\n");
    }
    return help;
}

}  // namespace emulator
