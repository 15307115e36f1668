#pragma once

#include <unistd.h>

#include <utility>

/// An open file's number. Closed with its owner.
class Descriptor {
 public:
    explicit Descriptor(int number = -1) : m_number(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_number, other.m_number);
        return *this;
    }

    int Get() const { return m_number; }
    void Close() {
        if (m_number >= 0) {
            close(std::exchange(m_number, -1));
        }
    }

 private:
    int m_number;
};
