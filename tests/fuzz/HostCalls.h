#pragma once

#include <string_view>
#include <vector>

#include "core/CDevApiInterface_Impl.h"

/// What a host does with a device, and what holds whatever the server says.

/// Numbers that the host hands in, one after the other and over again.
class HostNumbers {
 public:
    /// From a text such as "37.5 1e300 nan".
    explicit HostNumbers(std::string_view text);

    double Next() noexcept;

 private:
    std::vector<double> m_numbers;
    std::size_t m_next = 0;
};

/// A command must fit its buffer, consist of plain characters, and not name a number that is none.
void CheckCommand(std::string_view command);

/// The live counts stay within the arrays.
void CheckCounts(CDevApiInterface_Impl& device);

/// Calls every slot of the live channels, and of the channel behind the last of each kind: it has an object too. A
/// value handed out with success is finite.
void UseChannels(CDevApiInterface_Impl& device, HostNumbers& numbers);

/// Shows the status report, as far as it needs no window.
void ReadStatusReport(CDevApiInterface_Impl& device);
