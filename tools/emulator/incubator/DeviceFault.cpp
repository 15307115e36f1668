#include "incubator/DeviceFault.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "text/Duration.h"
#include "text/Number.h"
#include "text/Words.h"

namespace emulator {

namespace {

using Who = DeviceFaultWord::Who;

constexpr int kFirstGasProduct = 10;
constexpr int kLastGasProduct = 13;

const DeviceFaultWord* FindWord(std::string_view word) {
    const auto* const found = std::ranges::find(kDeviceFaultWords, word, &DeviceFaultWord::word);
    return found != kDeviceFaultWords.end() ? found : nullptr;
}

/// The words behind the fault's own, taken one after the other.
class Arguments {
 public:
    Arguments(std::vector<std::string_view> words, const DeviceFaultWord& word)
        : m_words(std::move(words)), m_usage("write \"" + UsageOf(word) + "\"") {}

    bool AtEnd() const { return m_next == m_words.size(); }

    [[noreturn]] void Fail(const std::string& what) const { throw DeviceFaultError(what + ": " + m_usage); }

    std::string_view Take(const std::string& what) {
        if (AtEnd()) {
            Fail(what + " is missing");
        }
        return m_words[m_next++];
    }

    int TakeWhole(const std::string& what, int least) {
        const std::string_view text = Take(what);
        const auto number = ReadExactly<int>(text);
        if (!number || *number < least) {
            Fail(what + " must be a whole number from " + std::to_string(least) + " on, not " + InQuotes(text));
        }
        return *number;
    }

    double TakeAmount(const std::string& what) {
        const auto amount = ParseNumber(Take(what));
        if (!amount) {
            Fail(amount.error);
        }
        if (std::abs(*amount) > kLargestAmount) {
            Fail(what + " must not be beyond " + FormatPlain(kLargestAmount));
        }
        return *amount;
    }

    void ExpectEnd() const {
        if (!AtEnd()) {
            Fail(InQuotes(m_words[m_next]) + " is too much");
        }
    }

 private:
    std::vector<std::string_view> m_words;
    std::string m_usage;
    std::size_t m_next = 0;
};

/// Takes "for SECONDS" off the end of the words.
std::optional<double> TakeSeconds(std::vector<std::string_view>& words) {
    if (words.size() < 2 || words[words.size() - 2] != "for") {
        if (!words.empty() && words.back() == "for") {
            throw DeviceFaultError("behind \"for\" a time is missing");
        }
        return std::nullopt;
    }
    const auto seconds = ParseDuration(words.back());
    if (!seconds) {
        throw DeviceFaultError("\"for\": " + seconds.error);
    }
    if (*seconds < kShortestFault) {
        throw DeviceFaultError("\"for " + std::string(words.back()) + "\" would end at once");
    }
    words.resize(words.size() - 2);
    return *seconds;
}

void TakeWho(Arguments& arguments, Who who, DeviceFault& fault) {
    if (who == Who::Server || (who == Who::ProductOrAll && arguments.AtEnd())) {
        return;
    }
    fault.product = arguments.TakeWhole("the product", 0);
    if (who == Who::Device) {
        fault.device = arguments.TakeWhole("the device", 0);
    }
}

void TakeNumbers(Arguments& arguments, DeviceFault& fault) {
    if (fault.kind == DeviceFault::Kind::Drift) {
        fault.amount = arguments.TakeAmount("the units a minute");
    } else if (fault.kind == DeviceFault::Kind::Spike) {
        fault.amount = arguments.TakeAmount("the size");
        fault.every = arguments.AtEnd() ? kSpikeEvery : arguments.TakeWhole("the number of readings", 1);
    }
}

}  // namespace

std::string UsageOf(const DeviceFaultWord& word) {
    std::string usage(word.word);
    switch (word.who) {
        case Who::Device:
            usage += " PRODUCT DEVICE";
            break;
        case Who::Product:
            usage += " PRODUCT";
            break;
        case Who::ProductOrAll:
            usage += " [PRODUCT]";
            break;
        case Who::Server:
            break;
    }
    return word.numbers.empty() ? usage : usage + " " + std::string(word.numbers);
}

bool IsDeviceFault(std::string_view text) {
    const std::vector<std::string_view> words = SplitWords(text);
    return !words.empty() && FindWord(words.front()) != nullptr;
}

DeviceFault ParseDeviceFault(std::string_view text) {
    std::vector<std::string_view> words = SplitWords(text);
    const DeviceFaultWord* const word = words.empty() ? nullptr : FindWord(words.front());
    if (word == nullptr) {
        std::vector<std::string> known;
        known.reserve(kDeviceFaultWords.size());
        for (const DeviceFaultWord& candidate : kDeviceFaultWords) {
            known.emplace_back(candidate.word);
        }
        throw DeviceFaultError(InQuotes(words.empty() ? "" : words.front()) + " is no fault of the device; there are " +
                               JoinWords(known, "and"));
    }
    DeviceFault fault;
    fault.kind = word->kind;
    fault.seconds = TakeSeconds(words);
    if (fault.kind == DeviceFault::Kind::Restart && !fault.seconds) {
        fault.seconds = kRestartSeconds;
    }
    words.erase(words.begin());
    Arguments arguments(std::move(words), *word);
    TakeWho(arguments, word->who, fault);
    TakeNumbers(arguments, fault);
    arguments.ExpectEnd();
    const int product = fault.product.value_or(0);
    if (fault.kind == DeviceFault::Kind::BottleEmpty && (product < kFirstGasProduct || product > kLastGasProduct)) {
        throw DeviceFaultError("product " + std::to_string(product) + " has no gas bottle: those from 10 to 13 have");
    }
    return fault;
}

std::string FormatDeviceFault(const DeviceFault& fault) {
    const auto* const word = std::ranges::find(kDeviceFaultWords, fault.kind, &DeviceFaultWord::kind);
    std::string text(word->word);
    for (const std::optional<int>& number : {fault.product, fault.device}) {
        text += number ? " " + std::to_string(*number) : "";
    }
    if (fault.kind == DeviceFault::Kind::Drift || fault.kind == DeviceFault::Kind::Spike) {
        text += " " + FormatPlain(fault.amount);
    }
    if (fault.kind == DeviceFault::Kind::Spike) {
        text += " " + std::to_string(fault.every);
    }
    return fault.seconds ? text + " for " + FormatPlain(*fault.seconds) : text;
}

}  // namespace emulator
