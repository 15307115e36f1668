// The status report: its triples, and what they take out of the catalogue. The first line of an input is the catalogue,
// "9 2 0 1 12 1 0" for product 9 with the two devices 0 and 1 and product 12 with the one device 0.

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "base/Scan.h"
#include "catalogue/ProductRecord.h"
#include "catalogue/StatusCheck.h"
#include "core/CDevApiInterface_Impl.h"
#include "fakes/HostLog.h"
#include "fakes/ScriptedPlatform.h"
#include "fuzz/Fuzz.h"
#include "oko/LibQuery.h"

namespace {

using Triple = std::array<int, 3>;

std::vector<ProductRecord> ReadCatalogue(std::string_view text) {
    std::vector<ProductRecord> products;
    Scanner scanner(text);
    ProductRecord record;
    int devices = 0;
    while (scanner.Integer(record.m_iProduct) && scanner.Integer(devices)) {
        products.push_back({record.m_iProduct, {}, {}});
        int device = 0;
        for (int i = 0; i < devices && scanner.Integer(device); ++i) {
            products.back().m_devices.push_back(device);
        }
    }
    return products;
}

/// Nothing when a number is too long.
std::optional<std::vector<Triple>> ExpectedTriples(const std::string& reply) {
    constexpr std::size_t kPrefix = 9;
    std::vector<int> numbers;
    std::string digits;
    for (std::size_t i = kPrefix; i < reply.size() && reply[i] != '\r'; ++i) {
        if (reply[i] >= '0' && reply[i] <= '9') {
            digits += reply[i];
            if (digits.size() > 3) {
                return std::nullopt;
            }
        } else {
            numbers.push_back(digits.empty() ? 0 : std::stoi(digits));
            digits.clear();
        }
    }
    std::vector<Triple> triples;
    for (std::size_t i = 0; i + 2 < numbers.size(); i += 3) {
        triples.push_back({numbers[i], numbers[i + 1], numbers[i + 2]});
    }
    return triples;
}

/// The devices without `device`; the one behind a removed device stays whatever it is.
std::vector<std::int32_t> Without(const std::vector<std::int32_t>& devices, int device) {
    std::vector<std::int32_t> kept;
    bool removedLast = false;
    for (const std::int32_t candidate : devices) {
        removedLast = !removedLast && candidate == device;
        if (!removedLast) {
            kept.push_back(candidate);
        }
    }
    return kept;
}

void Prune(std::vector<ProductRecord>& products, const Triple& triple) {
    const auto record = std::ranges::find(products, triple[0], &ProductRecord::m_iProduct);
    if (record == products.end()) {
        return;
    }
    record->m_devices = Without(record->m_devices, triple[1]);
    if (record->m_devices.empty()) {
        products.erase(record);
    }
}

bool IsSame(const ProductRecord& left, const ProductRecord& right) {
    return left.m_iProduct == right.m_iProduct && left.m_devices == right.m_devices;
}

/// One for all runs: the check touches no more of it than the catalogue and the host's log.
CDevApiInterface_Impl& TheDevice() {
    static ScriptedPlatform platform;
    static CDevApiInterface_Impl device(oko::kRealDevice);
    device.HostCallback = HostLog::Callback;
    return device;
}

void CheckOnDevice(std::vector<ProductRecord> products, const std::string& reply, const std::vector<Triple>& triples) {
    CDevApiInterface_Impl& device = TheDevice();
    device.m_products = products;
    device.CheckStatus(reply.c_str(), static_cast<int>(reply.size()));

    for (const Triple& triple : triples) {
        Prune(products, triple);
    }
    Require(std::ranges::equal(device.m_products, products, IsSame), "the failing devices are gone, and no others");
    Require(HostLog::Lines().size() == triples.size(), "every error has its line");

    // What stays behind looks like a leak, and looking for one takes long.
    HostLog::Reset();
    device.m_products = std::vector<ProductRecord>();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    InputLines lines(AsText(data, size));
    const std::vector<ProductRecord> products = ReadCatalogue(lines.Next());
    const std::string reply(lines.Rest());

    std::vector<Triple> triples;
    const StatusOutcome outcome = ParseStatus(
        reply, [&](const StatusError& status) { triples.push_back({status.product, status.device, status.error}); });
    const auto expected = ExpectedTriples(reply);
    Require(expected.has_value() == (outcome == StatusOutcome::Complete), "a number is too long from four digits on");
    if (expected) {
        Require(*expected == triples, "the errors are those of the report");
        CheckOnDevice(products, reply, triples);  // a number that is too long ends the process there, as it should
    }
    return 0;
}
