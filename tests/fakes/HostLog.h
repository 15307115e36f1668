#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// A host's callback that keeps what it is told: `device.Init(&HostLog::Callback, nullptr)`. A host callback has no
/// argument of its own, so there is one record for the whole process; a fixture resets it. Any thread.
class HostLog {
 public:
    using Hook = std::function<void(std::int32_t code, const wchar_t* text)>;

    static void Callback(std::int32_t code, const wchar_t* text);

    /// Forgets everything, the hook and the switch too.
    static void Reset();

    /// The log's lines in order. A null text is kept as L"(null)".
    static std::vector<std::wstring> Lines();

    /// How often the air mode was said to have changed, and whether that always came without a text.
    static std::size_t AirModeChanges();
    static bool AirModeChangesHadNoText();

    /// Codes that no host knows, in order.
    static std::vector<std::int32_t> UnknownCodes();

    /// Also writes each line to stderr, where a death test looks for it. What is not ASCII becomes "?".
    static void EchoToStderr(bool echo);

    /// Runs inside the callback, after the record was made and without a lock: here a host calls back into a channel.
    static void SetHook(Hook hook);
};
