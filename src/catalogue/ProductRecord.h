#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A parameter that a product offers for reading.
struct ParamRecord {
    static constexpr std::size_t kValueSize = 64;

    std::int32_t m_iParam = 0;

    /// The last reply to a read of this parameter, ending in a zero; empty before the first.
    std::array<char, kValueSize> m_szValue{};
};

/// A connected Okolab product, in the server's numbering.
struct ProductRecord {
    std::int32_t m_iProduct = 0;
    std::vector<std::int32_t> m_devices;  // in reply order; only the status check looks at them
    std::vector<ParamRecord> m_params;    // in reply order; the server lists them ascending
};
