#pragma once

#include <optional>
#include <string>

#include "judge/Band.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"

enum class SettlingState { Waiting, Settled, GivenUp };

/// Waits until a value was in its band for so long without interruption. A value outside, a round without a value and a
/// band that changed are interruptions.
class Settling {
 public:
    /// With `within` it gives up that long after the start; a value that settles in that moment has settled.
    Settling(double holdSeconds, std::optional<double> withinSeconds, Moment start);

    /// Takes one round's value. Nothing changes any more once it settled or gave up.
    SettlingState Update(const std::optional<double>& value, const Band& band, Moment now);

    SettlingState State() const { return m_state; }

    /// How long the value has been in its band now.
    double HeldSeconds() const { return m_heldSeconds; }

    /// From 0 to 1.
    double Progress() const;

    /// For people: "CO2 is 4.20 %, below 4.50 %", "CO2 is 5.00 %, within 4.50 to 5.50 %, for 20 s of 1 min",
    /// "CO2 gives no value".
    std::string Describe(const ChannelInfo& channel) const;

 private:
    double m_holdSeconds;
    std::optional<double> m_withinSeconds;
    Moment m_start;
    SettlingState m_state = SettlingState::Waiting;
    std::optional<Moment> m_inBandSince;
    double m_heldSeconds = 0.0;
    std::optional<double> m_value;
    Band m_band;
};
