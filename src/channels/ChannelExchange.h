#pragma once

#include <cstdint>
#include <string_view>

#include "channels/SharedValues.h"
#include "core/CommandText.h"
#include "link/LinkOperation.h"  // IWYU pragma: export
#include "link/Products.h"

/// The two exchanges that every channel has with the server: reading a value and writing a set point. What differs
/// between the channels is data.

/// A command that names a channel by its product and its number in it.
CommandText FormatFor(std::string_view format, ChannelAddress address) noexcept;

/// Which log lines an exchange sends.
enum class LogGate {
    Always,
    WhenChannelLogs,          // only when the channel's m_bLogCommunication is set
    ServerProblemWhenLogging  // result code 1 only then, everything else always
};

/// How a read operation differs from the others.
struct ReadRules {
    std::wstring_view method;      // full name, the start of its log lines
    std::string_view errorMarks;   // payloads that begin with one of these are logged and fail
    std::string_view silentMarks;  // payloads that begin with one of these fail without a line
    bool answersWhileBusy;         // from the last known value, without asking the server
    LogGate gate;
};

/// `operation`, in all of them: the operation that the exchange is a part of, or just the device.

/// Sends `command` and reads the value of its reply into `value` and `cache`. A reply without a value leaves both as
/// they were and succeeds. `channelLogs`: the channel's own log flag. Returns the host's result, -1 when `value` is
/// null. Any thread; blocks until the server answers; allocates nothing but to remember a command that timed out.
std::int32_t AskChannelValue(const LinkOperation& operation, const ReadRules& rules, bool channelLogs,
                             const CommandText& command, SharedDouble& cache, double* value) noexcept;

/// The same, but answers from `cache` while the device is busy, where the rules say so.
std::int32_t ReadChannelValue(const LinkOperation& operation, const ReadRules& rules, bool channelLogs,
                              const CommandText& command, SharedDouble& cache, double* value) noexcept;

/// How a write operation differs from the others.
struct WriteRules {
    std::wstring_view method;
    std::string_view format;
    LogGate gate;
};

/// Sends a set point and judges the reply. Returns the host's result. Any thread; blocks until the server answers;
/// allocates nothing but to remember a command that timed out.
std::int32_t WriteSetPoint(const LinkOperation& operation, const WriteRules& rules, bool channelLogs,
                           ChannelAddress address, double value) noexcept;
