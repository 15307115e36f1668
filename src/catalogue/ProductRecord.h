#pragma once

#include <array>
#include <cstdint>
#include <vector>

/// A parameter that a product offers for reading.
struct ParamRecord {
    std::int32_t m_iParam = 0;

    /// The last reply to a read of this parameter, ending in a zero; empty before the first.
    std::array<char, 64> m_szValue{};
};

/// A connected Okolab product, in the server's numbering.
struct ProductRecord {
    std::int32_t m_iProduct = 0;
    std::vector<std::int32_t> m_devices;  // in reply order
    std::vector<ParamRecord> m_params;    // in reply order; the server lists them ascending
};
