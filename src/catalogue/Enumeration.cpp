// Which products are connected, and what devices and parameters each offers.

#include "catalogue/ProductRecord.h"
#include "core/CDevApiInterface_Impl.h"
#include "link/Exchange.h"
#include "link/ResultCode.h"
#include "platform/Clock.h"

namespace {

constexpr int kListConProdRepeats = 4;
constexpr std::uint32_t kListConProdDelayMs = 1000;

// Only these products have parameters to list.
constexpr int kFirstProductWithParams = 8;
constexpr int kLastProductWithParams = 17;

void TakeIntegers(CDevApiInterface_Impl& device, const Reply& reply, const std::function<void(int)>& take) {
    if (ParseIntegerList(reply.bytes(), take) == ListOutcome::NumberTooLong) {
        device.FatalFault(L"OKO-Lab bold line ParseIntegerList: a number in the server's reply is too long.");
    }
}

/// A server with problems of its own is asked again.
bool IsServerProblem(const Reply& reply) noexcept { return reply.bytes().starts_with('0' + kServerProblem); }

Reply AskForProducts(CDevApiInterface_Impl& device) noexcept {
    Reply reply = Ask(device, FormatCommand(command::kListConProd), kListReplySize);
    for (int repeats = 0; IsServerProblem(reply) && repeats < kListConProdRepeats; ++repeats) {
        SleepMilliseconds(kListConProdDelayMs);
        reply = Ask(device, FormatCommand(command::kListConProd), kListReplySize);
    }
    return reply;
}

void EnumerateProduct(CDevApiInterface_Impl& device, ProductRecord& record) {
    const int product = record.m_iProduct;
    TakeIntegers(device, Ask(device, FormatCommand(command::kListDev, {product}), kListReplySize),
                 [&](int number) { record.m_devices.push_back(number); });
    if (product >= kFirstProductWithParams && product <= kLastProductWithParams) {
        TakeIntegers(device, Ask(device, FormatCommand(command::kListParams, {product}), kListReplySize),
                     [&](int number) {
                         record.m_params.push_back({number, {}});
                     });
    }
}

}  // namespace

void CDevApiInterface_Impl::EnumerateProducts() {
    const Reply products = AskForProducts(*this);
    m_products.clear();
    TakeIntegers(*this, products, [&](int number) { m_products.push_back({number, {}, {}}); });
    if (m_products.empty()) {
        return;
    }

    const int first = m_products.front().m_iProduct;
    TakeIntegers(*this, Ask(*this, FormatCommand(command::kReadComPort, {first}), kListReplySize),
                 [&](int number) { m_iComPort = number; });  // the last one wins
    for (ProductRecord& record : m_products) {
        EnumerateProduct(*this, record);
    }
}
