// A request to the page's server, whose first line is the method and the target, the next ones headers up to an empty
// one, and the rest the body: it is answered, and nobody learns or does what needs a token without it.

#include <string>
#include <string_view>
#include <variant>

#include "fuzz/Fuzz.h"
#include "host/MadeSnapshot.h"
#include "keep/Keeper.h"
#include "model/Event.h"
#include "page/Access.h"
#include "page/Request.h"
#include "page/Router.h"
#include "page/Target.h"

namespace {

constexpr std::string_view kToken = "0123456789abcdef";

const Keeper& Watch() {
    static const Keeper* const kKeeper = [] {
        auto* keeper = new Keeper;  // lives as long as the process
        for (std::uint64_t row = 1; row <= 20; ++row) {
            Snapshot snapshot = MadeSnapshot(row);
            snapshot.when.utcMs = static_cast<std::int64_t>(row) * 1000;
            keeper->Add(snapshot);
            keeper->Add(Event{row, {}, EventKind::Log, "", "line"});
        }
        return keeper;
    }();
    return *kKeeper;
}

Request Read(std::string_view input) {
    InputLines lines(input);
    Request request;
    const std::string_view first = lines.Next();
    const std::size_t blank = first.find(' ');
    request.method = first.substr(0, blank);
    request.target = blank == std::string_view::npos ? std::string_view{} : first.substr(blank + 1);
    while (!lines.AtEnd()) {
        const std::string_view line = lines.Next();
        if (line.empty()) {
            break;
        }
        const std::size_t colon = line.find(": ");
        request.headers.emplace_back(line.substr(0, colon),
                                     colon == std::string_view::npos ? std::string_view{} : line.substr(colon + 2));
    }
    request.body = lines.Rest();
    return request;
}

bool IsKnown(int status) {
    for (const int known : {200, 303, 400, 401, 403, 404, 405, 422}) {
        if (status == known) {
            return true;
        }
    }
    return false;
}

void CheckDecoding(std::string_view text) {
    const auto decoded = PercentDecode(text);
    Require(!decoded || decoded->size() <= text.size(), "what is decoded is no longer than before");
    Require(!decoded || decoded->find('\0') == std::string::npos, "nothing decoded ends a text early");
    if (const auto target = ParseTarget(text)) {
        Require(!target->path.empty(), "a target has a path");
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = AsText(data, size);
    const Request request = Read(input);
    CheckDecoding(request.target);

    const bool mayKnow = input.find(kToken) != std::string_view::npos || request.target.find('%') != std::string::npos;
    for (const bool isLocal : {true, false}) {
        const AccessRules rules{isLocal, std::string(kToken), true, {"microscope7"}};
        const Outcome outcome = Route(request, Watch(), rules);
        const auto* const reply = std::get_if<Reply>(&outcome);
        Require(reply == nullptr || IsKnown(reply->status), "every reply has a status that docs/http.md names");
        Require(isLocal || mayKnow || (reply != nullptr && reply->status >= 400),
                "elsewhere nothing without the token");
        Require(!std::holds_alternative<TargetWanted>(outcome) || input.find(kToken) != std::string_view::npos,
                "no target is set without the token");
        for (const auto& [name, value] : reply != nullptr ? reply->headers : Headers{}) {
            Require(value.find_first_of("\r\n") == std::string::npos, "no header holds a line's end");
        }
    }
    return 0;
}
