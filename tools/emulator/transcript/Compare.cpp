#include "transcript/Compare.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "protocol/Answer.h"
#include "text/Number.h"
#include "text/Parsed.h"
#include "text/Words.h"
#include "transcript/Transcript.h"

namespace emulator {

namespace {

std::string Quoted(std::string_view bytes) { return bytes.empty() ? "nothing" : InQuotes(Escape(bytes)); }

/// The numbers of a list with blanks in between; nothing where one is none, or the list is empty.
std::optional<std::vector<double>> NumbersOf(std::string_view payload) {
    std::vector<double> numbers;
    for (payload = TrimBlanks(payload); !payload.empty(); payload = TrimBlanks(payload)) {
        const std::size_t end = std::min(payload.find(' '), payload.size());
        const Parsed<double> number = ParseNumber(payload.substr(0, end));
        if (!number) {
            return std::nullopt;
        }
        numbers.push_back(*number);
        payload.remove_prefix(end);
    }
    return numbers.empty() ? std::nullopt : std::optional(numbers);
}

bool IsWithin(double first, double second, double tolerance) {
    // 0.1 is no binary fraction: 37.1 must be within 0.1 of 37.0.
    const double rounding = 1e-12 * std::max(std::abs(first), std::abs(second));
    return std::abs(first - second) <= tolerance + rounding;
}

bool AreAlike(std::string_view first, std::string_view second, std::optional<double> tolerance) {
    if (first == second || !tolerance) {
        return first == second;
    }
    const auto firstNumbers = NumbersOf(first);
    const auto secondNumbers = NumbersOf(second);
    return firstNumbers && secondNumbers && firstNumbers->size() == secondNumbers->size() &&
           std::ranges::equal(*firstNumbers, *secondNumbers,
                              [&](double a, double b) { return IsWithin(a, b, *tolerance); });
}

/// Collects the differences of one exchange.
class Differences {
 public:
    explicit Differences(const Exchange& exchange) : m_exchange(exchange) {}

    void Add(const char* what, std::string recorded, std::string got) {
        m_list.push_back({m_exchange.line, m_exchange.command.value_or(""), what, std::move(recorded), std::move(got)});
    }

    void AddReply(std::string_view recorded, std::string_view got, std::optional<double> tolerance) {
        const auto before = SplitReply(recorded);
        const auto now = SplitReply(got);
        if (!before || !now) {
            if (recorded != got) {
                Add("reply", Quoted(recorded), Quoted(got));
            }
            return;
        }
        if (before->answer.code != now->answer.code) {
            Add("code", std::to_string(before->answer.code), std::to_string(now->answer.code));
        }
        if (before->echo != now->echo) {
            Add("echo", Quoted(before->echo), Quoted(now->echo));
        }
        if (!AreAlike(before->answer.payload, now->answer.payload, tolerance)) {
            Add("payload", Quoted(before->answer.payload), Quoted(now->answer.payload));
        }
    }

    std::vector<Difference> Take() { return std::move(m_list); }

 private:
    const Exchange& m_exchange;
    std::vector<Difference> m_list;
};

}  // namespace

std::string CountText(std::size_t datagrams) {
    return datagrams == 0 ? "no answer" : Counted(datagrams, "datagram", "datagrams");
}

std::vector<Difference> CompareReplies(const Exchange& recorded, const std::vector<std::string>& got,
                                       std::optional<double> tolerance) {
    Differences differences(recorded);
    if (recorded.replies.size() != got.size()) {
        differences.Add("number", CountText(recorded.replies.size()), CountText(got.size()));
    }
    for (std::size_t i = 0; i < std::min(recorded.replies.size(), got.size()); ++i) {
        differences.AddReply(recorded.replies[i].datagram, got[i], tolerance);
    }
    return differences.Take();
}

std::string FormatDifference(const Difference& difference) {
    return "line " + std::to_string(difference.line) + ", " + Escape(difference.command) + ": " + difference.what +
           ": recorded " + difference.recorded + ", got " + difference.got;
}

}  // namespace emulator
