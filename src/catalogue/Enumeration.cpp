// Which products are connected, and what devices and parameters each offers.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "catalogue/Catalogue.h"
#include "catalogue/ProductRecord.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/Products.h"
#include "link/ResultCode.h"
#include "platform/Clock.h"

namespace {

constexpr int kListConProdRepeats = 4;
constexpr std::uint32_t kListConProdDelayMs = 1000;

void TakeIntegers(CDevApiInterface_Impl& device, const Reply& reply, const std::function<void(int)>& take) {
    if (ParseIntegerList(reply.bytes(), take) == ListOutcome::NumberTooLong) {
        // kept: docs/oddities.md#long-number-is-fatal
        device.FatalFault(L"OKO-Lab bold line ParseIntegerList: a number in the server's reply is too long.");
    }
}

/// A server with problems of its own is asked again.
bool IsServerProblem(const Reply& reply) noexcept { return reply.bytes().starts_with('0' + kServerProblem); }

Reply AskForProducts(const LinkOperation& operation) noexcept {
    Reply reply = Ask(operation, FormatCommand(command::kListConProd), kListReplySize);
    for (int repeats = 0; IsServerProblem(reply) && repeats < kListConProdRepeats; ++repeats) {
        SleepMilliseconds(kListConProdDelayMs);
        reply = Ask(operation, FormatCommand(command::kListConProd), kListReplySize);
    }
    return reply;
}

/// Each list is read aside and put into the catalogue whole.
void EnumerateProduct(const LinkOperation& operation, std::size_t index, std::int32_t product) {
    CDevApiInterface_Impl& device = operation.Device();
    std::vector<std::int32_t> devices;
    TakeIntegers(device, Ask(operation, FormatCommand(command::kListDev, {product}), kListReplySize),
                 [&](int number) { devices.push_back(number); });
    SetDevices(device, index, product, std::move(devices));
    if (!TraitsOf(product).listsParameters) {
        return;
    }
    std::vector<ParamRecord> parameters;
    TakeIntegers(device, Ask(operation, FormatCommand(command::kListParams, {product}), kListReplySize),
                 [&](int number) { parameters.push_back({number, {}}); });
    SetParameters(device, index, product, std::move(parameters));
}

}  // namespace

void CDevApiInterface_Impl::EnumerateProducts(const LinkOperation& operation) {
    const Reply reply = AskForProducts(operation);
    if (operation.HasEnded()) {
        return;
    }
    std::vector<ProductRecord> products;
    // kept: docs/oddities.md#duplicate-products
    TakeIntegers(*this, reply, [&](int number) { products.push_back({number, {}, {}}); });
    ReplaceProducts(*this, std::move(products));

    const auto first = ProductAt(*this, 0);
    if (!first) {
        return;
    }
    TakeIntegers(*this, Ask(operation, FormatCommand(command::kReadComPort, {*first}), kListReplySize),
                 [&](int number) { m_iComPort = number; });  // kept: docs/oddities.md#last-port-wins
    for (std::size_t i = 0; const auto product = ProductAt(*this, i); ++i) {
        EnumerateProduct(operation, i, *product);
    }
}
