#include "catalogue/Catalogue.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "base/Text.h"
#include "catalogue/ProductRecord.h"
#include "core/CDevApiInterface_Impl.h"

namespace {

/// The lists are ascending: the search ends at the first larger number. Null when the parameter is not listed. Under
/// the lock.
// kept: docs/oddities.md#ascending-lists
template <class Params>
auto FindIn(Params& params, std::uint32_t parameter) noexcept {
    const auto found = std::ranges::find_if(
        params, [&](const ParamRecord& param) { return static_cast<std::uint32_t>(param.m_iParam) >= parameter; });
    const bool listed = found != params.end() && static_cast<std::uint32_t>(found->m_iParam) == parameter;
    return listed ? &*found : nullptr;
}

/// The parameter in the first record of its product. Under the lock.
template <class Products>
auto FindIn(Products& products, std::int32_t product, std::uint32_t parameter) noexcept {
    const auto record = std::ranges::find(products, product, &ProductRecord::m_iProduct);
    return record != products.end() ? FindIn(record->m_params, parameter) : nullptr;
}

/// The record at `index`, null when it is another product's by now. Under the lock.
ProductRecord* RecordAt(CDevApiInterface_Impl& device, std::size_t index, std::int32_t product) noexcept {
    const bool same = index < device.m_products.size() && device.m_products[index].m_iProduct == product;
    return same ? &device.m_products[index] : nullptr;
}

}  // namespace

std::optional<std::int32_t> ProductAt(const CDevApiInterface_Impl& device, std::size_t index) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    return index < device.m_products.size() ? std::optional(device.m_products[index].m_iProduct) : std::nullopt;
}

bool AnyProduct(const CDevApiInterface_Impl& device, bool (*test)(std::int32_t product) noexcept) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    return std::ranges::any_of(device.m_products, test, &ProductRecord::m_iProduct);
}

bool AnyParameter(const CDevApiInterface_Impl& device) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    return std::ranges::any_of(device.m_products, [](const ProductRecord& record) { return !record.m_params.empty(); });
}

bool ListsParameter(const CDevApiInterface_Impl& device, std::size_t index, std::int32_t parameter) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    return index < device.m_products.size() &&
           FindIn(device.m_products[index].m_params, static_cast<std::uint32_t>(parameter)) != nullptr;
}

std::optional<KeptReply> FindKeptReply(const CDevApiInterface_Impl& device, std::int32_t product,
                                       std::uint32_t parameter) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    const ParamRecord* const param = FindIn(device.m_products, product, parameter);
    return param != nullptr ? std::optional(param->m_szValue) : std::nullopt;
}

void KeepReply(CDevApiInterface_Impl& device, std::int32_t product, std::uint32_t parameter,
               std::string_view reply) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    if (ParamRecord* const param = FindIn(device.m_products, product, parameter)) {
        CopyCut(reply, param->m_szValue);
    }
}

void ReplaceProducts(CDevApiInterface_Impl& device, std::vector<ProductRecord> products) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    device.m_products.swap(products);
}

void SetDevices(CDevApiInterface_Impl& device, std::size_t index, std::int32_t product,
                std::vector<std::int32_t> devices) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    if (ProductRecord* const record = RecordAt(device, index, product)) {
        record->m_devices.swap(devices);
    }
}

void SetParameters(CDevApiInterface_Impl& device, std::size_t index, std::int32_t product,
                   std::vector<ParamRecord> parameters) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    if (ProductRecord* const record = RecordAt(device, index, product)) {
        record->m_params.swap(parameters);
    }
}

void RemoveDevice(CDevApiInterface_Impl& device, std::int32_t product, std::int32_t deviceNumber) noexcept {
    const std::scoped_lock lock(device.m_csCatalogue);
    auto& products = device.m_products;
    const auto record = std::ranges::find(products, product, &ProductRecord::m_iProduct);
    if (record == products.end()) {
        return;
    }
    // kept: docs/oddities.md#skipped-neighbour
    auto& devices = record->m_devices;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        if (devices[i] == deviceNumber) {
            devices.erase(devices.begin() + static_cast<std::ptrdiff_t>(i));
        }
    }
    // kept: docs/oddities.md#product-without-devices
    if (devices.empty()) {
        products.erase(record);
    }
}
