#pragma once

#include <atomic>

/// Sets a flag for as long as it lives, and then puts back what it was.
class FlagWhile {
 public:
    explicit FlagWhile(std::atomic<bool>& flag) noexcept : m_flag(flag), m_bBefore(flag.exchange(true)) {}
    ~FlagWhile() { m_flag = m_bBefore; }
    FlagWhile(const FlagWhile&) = delete;
    FlagWhile& operator=(const FlagWhile&) = delete;

 private:
    std::atomic<bool>& m_flag;
    const bool m_bBefore;
};

/// Takes a flag that only one may hold, for as long as it lives. False when somebody else has it.
class FlagTurn {
 public:
    explicit FlagTurn(std::atomic<bool>& flag) noexcept : m_flag(flag), m_bMine(!flag.exchange(true)) {}
    ~FlagTurn() {
        if (m_bMine) {
            m_flag = false;
        }
    }
    FlagTurn(const FlagTurn&) = delete;
    FlagTurn& operator=(const FlagTurn&) = delete;

    explicit operator bool() const noexcept { return m_bMine; }

 private:
    std::atomic<bool>& m_flag;
    const bool m_bMine;
};
