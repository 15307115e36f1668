#pragma once

#include <initializer_list>
#include <string_view>

#include "core/CommandText.h"

/// The formats of all commands. "%d" takes an integer, "%0.<n>f" a number with n decimals.
namespace command {

inline constexpr std::string_view kListProd = "listprod";                           // all products the server knows
inline constexpr std::string_view kListConProd = "listconprod";                     // the connected products
inline constexpr std::string_view kReadComPort = "comport %d 0";                    // product
inline constexpr std::string_view kListDev = "listdev %d";                          // product
inline constexpr std::string_view kListParams = "bl-param-list %d";                 // product
inline constexpr std::string_view kMode = "mode %d %d";                             // product, 1 for the simulator
inline constexpr std::string_view kSetComPort = "comport %d 0 %d";                  // product, port
inline constexpr std::string_view kSetComPortSecondLink = "comport %d 1 %d";        // product, port
inline constexpr std::string_view kCheckConnection = "checkcon %d";                 // product
inline constexpr std::string_view kStart = "start %d";                              // 1 start, 0 stop
inline constexpr std::string_view kStatus = "status";                               // triples of product, device, error
inline constexpr std::string_view kDisconnect = "connect %d 0";                     // product
inline constexpr std::string_view kFind = "find %d";                                // product
inline constexpr std::string_view kFindStatus = "findstat";                         // until its reply contains "-1"
inline constexpr std::string_view kReadCurrent = "readcurval %d(%d)";               // product, device
inline constexpr std::string_view kReadCurrentOnly = "readcurval %d";               // product
inline constexpr std::string_view kReadTarget = "readsetpoint %d %d -1";            // product, device
inline constexpr std::string_view kWriteTemperature = "writesetpoint %d %d %0.1f";  // product, device, degrees Celsius
inline constexpr std::string_view kWriteGas = "writesetpoint %d %d %0.2f";          // product, device, percent
inline constexpr std::string_view kWriteHumidity = "writesetpoint %d %d %0.0f";     // product, device, percent
inline constexpr std::string_view kReadMin = "readmin %d %d";                       // product, device
inline constexpr std::string_view kReadMax = "readmax %d %d";                       // product, device
inline constexpr std::string_view kReadParam = "bl-param-read %d %d";               // product, parameter
inline constexpr std::string_view kWriteParam = "bl-param-write %d %d %d";          // product, parameter, value
inline constexpr std::string_view kTemperatureAlarm = "alarm %d %0.1f";             // product, degrees Celsius
inline constexpr std::string_view kGasAlarm = "alarm %d %0.2f";                     // product, percent

}  // namespace command

/// Whether a command asks and changes nothing, neither in the server nor in the incubator. The port is not among what a
/// reading command asks: its command differs from the one that sets it by its length alone.
bool IsReadingCommand(std::string_view command) noexcept;

/// One argument of a command.
class CommandArgument {
 public:
    constexpr CommandArgument(int value) noexcept : m_iValue(value) {}
    constexpr CommandArgument(double value) noexcept : m_dValue(value) {}

    constexpr int Integer() const noexcept { return m_iValue; }
    constexpr double Number() const noexcept { return m_dValue; }

 private:
    int m_iValue = 0;
    double m_dValue = 0.0;
};

/// Fills a format of the table. A command that does not fit is cut and says so; it must not be sent.
CommandText FormatCommand(std::string_view format, std::initializer_list<CommandArgument> arguments = {}) noexcept;
