#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

/// Gives an object of `Count` slots a table of its own for as long as this lives, in which single slots can be
/// replaced, as a host may do.
template <std::size_t Count>
class ReplacedSlots {
 public:
    explicit ReplacedSlots(void* object) : m_ppTable(static_cast<void***>(object)), m_pOriginal(*m_ppTable) {
        std::copy_n(m_pOriginal - kPrefix, m_table.size(), m_table.begin());
        *m_ppTable = m_table.data() + kPrefix;
    }
    ~ReplacedSlots() { *m_ppTable = m_pOriginal; }
    ReplacedSlots(const ReplacedSlots&) = delete;
    ReplacedSlots& operator=(const ReplacedSlots&) = delete;

    /// The function takes the object as its first argument.
    template <class Result, class... Arguments>
    void Replace(std::size_t slot, Result (*function)(Arguments...)) {
        m_table[kPrefix + slot] = reinterpret_cast<void*>(function);
    }

    /// What was there before, as a function of this type.
    template <class Function>
    Function* Original(std::size_t slot) const {
        return reinterpret_cast<Function*>(m_pOriginal[slot]);
    }

 private:
    static constexpr std::size_t kPrefix = 2;  // what GCC's layout keeps in front of the slots

    void*** m_ppTable;
    void** m_pOriginal;
    std::array<void*, kPrefix + Count> m_table{};
};
