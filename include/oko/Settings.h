#pragma once

#include <cstdint>

namespace oko {

/// The two settings texts. The plug-in writes and reads them, the host stores them between runs and need not look
/// inside. Wide characters, ending in a zero; numbers with a decimal point, whatever the locale.
///
/// Read as scanf reads with the format of the same shape: keys in this order and letter by letter; a blank of the
/// format matches any run of white space, even none. The first mismatch ends the reading: what was read before it
/// counts, the rest keeps its default. Anything after the last number is ignored. No text is an error, and no number is
/// out of range; one that is not finite is a mismatch.

/// Alarm settings text, of ShowConfiguration and ApplyConfiguration: each key, a blank and its number, with
/// kAlarmSeparator between them. Written with six decimals:
///
///     dIncubatorBelow 0.200000 | dIncubatorAbove 0.200000 | dCO2Below 0.500000 | ... | dHumidityAbove 1.000000
///
/// Each number says how far below or above the target a value may stray, in the channel's unit. An empty text is all
/// defaults.
inline constexpr const wchar_t* kIncubatorBelowKey = L"dIncubatorBelow";  // degrees Celsius, default 0.2
inline constexpr const wchar_t* kIncubatorAboveKey = L"dIncubatorAbove";  // degrees Celsius, default 0.2
inline constexpr const wchar_t* kCo2BelowKey = L"dCO2Below";              // percent CO2, default 0.5
inline constexpr const wchar_t* kCo2AboveKey = L"dCO2Above";              // percent CO2, default 0.5
inline constexpr const wchar_t* kO2BelowKey = L"dO2Below";                // percent O2, default 0.5
inline constexpr const wchar_t* kO2AboveKey = L"dO2Above";                // percent O2, default 0.5
inline constexpr const wchar_t* kHumidityBelowKey = L"dHumidityBelow";    // percent relative humidity, default 1.0
inline constexpr const wchar_t* kHumidityAboveKey = L"dHumidityAbove";    // percent relative humidity, default 1.0
inline constexpr const wchar_t* kAlarmSeparator = L" | ";

/// Connection settings text, of ShowConnection and ApplyConnection: the key, a blank and the number of the incubator's
/// serial port, "m_iComPort 3" for COM3. A text that does not match keeps the port that was set before (0 at first).
inline constexpr const wchar_t* kComPortKey = L"m_iComPort";

/// Options for hosts that run unattended, behind the port of the text for ApplyConnection, in any order:
///
///     m_iComPort 3 m_nReplyTimeout 5000 m_bWatchOnly 1
///
/// They hold for the link that this ApplyConnection opens. Each ApplyConnection begins anew without them;
/// ShowConnection does not read them, and never writes them. The simulator takes them and behaves as without.

/// How long each reply is waited for, in milliseconds, instead of the registry's ReplyTimeout; 0: for ever. A negative
/// number is ignored.
inline constexpr const wchar_t* kReplyTimeoutKey = L"m_nReplyTimeout";

/// Not 0: this host watches an incubator that another program runs, and changes nothing. Only reading commands are
/// sent. Init asks what is connected, sets nothing up, starts no server, shows no message box, and fails where no
/// server answers. New targets, the air mode and Find and Connect give -1, ApplyConfiguration keeps the tolerances for
/// the channels' states and gives 0, Close closes the link. Nothing is sent for any of these.
inline constexpr const wchar_t* kWatchOnlyKey = L"m_bWatchOnly";

/// Wide characters that the buffer given to ShowConfiguration must hold. The plug-in writes the alarm settings text
/// without looking at the size it was given: eight keys and eight numbers of up to 317 characters each (a sign, 309
/// digits, a point, 6 decimals), and the terminator.
inline constexpr std::int32_t kConfigurationTextLength = 2688;

/// Wide characters that the buffer given to ShowConnection must hold: the key, a blank, a number of up to 11 characters
/// and the terminator. Written without looking at the length it was given, too.
inline constexpr std::int32_t kConnectionTextLength = 32;

}  // namespace oko
