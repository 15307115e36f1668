#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

/// A reply of the server: result code, "_", the command as it was sent, "_", the payload, a carriage return. The
/// payload is a list of tokens separated by single blanks.

/// Capacities of the replies: the catalogue's lists are long, everything else is short.
inline constexpr int kReplySize = 64;
inline constexpr int kListReplySize = 1023;

inline constexpr char kReplyEnd = '\r';

/// The buffer that carries a reply. It is all zeros at first and has one spare byte behind its capacity, so that a
/// reply that fills it still ends in a zero.
class Reply {
 public:
    explicit Reply(int capacity = kReplySize) noexcept : m_nCapacity(capacity) {}

    char* data() noexcept { return m_text.data(); }
    const char* c_str() const noexcept { return m_text.data(); }
    int capacity() const noexcept { return m_nCapacity; }

    /// A server answered: at least one byte came.
    bool IsAnswer() const noexcept { return m_nLength >= 1; }

    /// The received bytes; none when the exchange failed: a reply too long for the buffer fills it all the same.
    std::string_view bytes() const noexcept {
        return {m_text.data(), m_nLength > 0 ? static_cast<std::size_t>(m_nLength) : 0};
    }

    /// The received bytes up to their first zero.
    std::string_view text() const noexcept { return bytes().substr(0, bytes().find('\0')); }

    /// Bytes received, negative when the exchange failed.
    int m_nLength = 0;

 private:
    std::array<char, kListReplySize + 1> m_text{};
    int m_nCapacity;
};

/// The result code: the first character alone as a digit, 0 when it is none or missing.
int ResultCodeOf(std::string_view reply) noexcept;

/// The command that the reply echoes: what stands between its first two "_". Nothing without two.
std::optional<std::string_view> EchoOf(std::string_view reply) noexcept;

/// Where the payload begins: just after the second "_". Nothing when a carriage return or the end comes first, also
/// when the payload is empty.
std::optional<std::size_t> PayloadPosition(std::string_view reply) noexcept;

/// The text without one trailing line feed or carriage return.
std::string_view DropLineEnd(std::string_view text) noexcept;

/// A payload's first token, for the channels' reads.
struct ValueToken {
    char mark = '\0';             // the payload's first character, '\0' without a payload
    std::optional<double> value;  // absent when the token has no end, a blank or a carriage return, or is not finite
};

/// Reads the first token of the payload as a decimal number.
ValueToken ParseValue(std::string_view reply) noexcept;

/// How reading an integer list ended.
enum class ListOutcome { Complete, NumberTooLong };

/// The most digits that the server's numbers have room for.
inline constexpr std::size_t kMaxListDigits = 7;

/// Hands every integer of the payload to `take`, in order. A character that is neither a digit, a blank nor "_" counts
/// as the integer 0. Stops at a number of more than kMaxListDigits digits.
// kept: docs/oddities.md#list-of-zeros
ListOutcome ParseIntegerList(std::string_view reply, const std::function<void(int)>& take);
