#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "catalogue/ProductRecord.h"

class CDevApiInterface_Impl;

/// Reading and changing the catalogue of connected products, m_products, under its lock. Init and a search rebuild it
/// while other threads, or the host from its callback, read it: nobody keeps a pointer into it, each of these functions
/// takes the lock once and gives copies. Any thread; none of them calls anybody while it holds the lock.

/// The product number of record `index`, in the server's order; nothing behind the last one. Walking by it is safe
/// while the catalogue is rebuilt: the walk then goes on in the new one.
std::optional<std::int32_t> ProductAt(const CDevApiInterface_Impl& device, std::size_t index) noexcept;

/// Whether the catalogue has a product for which `test` holds.
bool AnyProduct(const CDevApiInterface_Impl& device, bool (*test)(std::int32_t product) noexcept) noexcept;

/// Whether any product offers parameters at all.
bool AnyParameter(const CDevApiInterface_Impl& device) noexcept;

/// Whether record `index` lists a parameter. The lists are ascending: the search ends at the first larger number.
bool ListsParameter(const CDevApiInterface_Impl& device, std::size_t index, std::int32_t parameter) noexcept;

/// The kept reply of a parameter, empty before its first read; nothing when the first record of the product does not
/// list it.
using KeptReply = std::array<char, ParamRecord::kValueSize>;
std::optional<KeptReply> FindKeptReply(const CDevApiInterface_Impl& device, std::int32_t product,
                                       std::uint32_t parameter) noexcept;

/// Keeps as much of `reply` as fits before a terminator, if the product still lists the parameter.
void KeepReply(CDevApiInterface_Impl& device, std::int32_t product, std::uint32_t parameter,
               std::string_view reply) noexcept;

/// Puts a new list of products in the place of the old one.
void ReplaceProducts(CDevApiInterface_Impl& device, std::vector<ProductRecord> products) noexcept;

/// Gives record `index` its devices or parameters, if it is still the one of `product`.
void SetDevices(CDevApiInterface_Impl& device, std::size_t index, std::int32_t product,
                std::vector<std::int32_t> devices) noexcept;
void SetParameters(CDevApiInterface_Impl& device, std::size_t index, std::int32_t product,
                   std::vector<ParamRecord> parameters) noexcept;

/// Takes a device out of the first record of its product, and a product without devices out of the catalogue.
void RemoveDevice(CDevApiInterface_Impl& device, std::int32_t product, std::int32_t deviceNumber) noexcept;
