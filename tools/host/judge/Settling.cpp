#include "judge/Settling.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "judge/Band.h"
#include "judge/Describe.h"
#include "model/ChannelInfo.h"
#include "model/Moment.h"
#include "text/Duration.h"

Settling::Settling(double holdSeconds, std::optional<double> withinSeconds, Moment start)
    : m_holdSeconds(holdSeconds), m_withinSeconds(withinSeconds), m_start(start) {}

SettlingState Settling::Update(const std::optional<double>& value, const Band& band, Moment now) {
    if (m_state != SettlingState::Waiting) {
        return m_state;
    }
    if (!value || !band.Holds(*value) || band != m_band) {
        m_inBandSince.reset();
    }
    m_value = value;
    m_band = band;
    if (value && band.Holds(*value) && !m_inBandSince) {
        m_inBandSince = now;
    }
    m_heldSeconds = m_inBandSince ? now.seconds - m_inBandSince->seconds : 0.0;
    if (m_inBandSince && m_heldSeconds >= m_holdSeconds) {
        m_state = SettlingState::Settled;
    } else if (m_withinSeconds && now.seconds - m_start.seconds >= *m_withinSeconds) {
        m_state = SettlingState::GivenUp;
    }
    return m_state;
}

double Settling::Progress() const {
    if (m_state == SettlingState::Settled) {
        return 1.0;
    }
    return m_holdSeconds > 0.0 ? std::min(m_heldSeconds / m_holdSeconds, 1.0) : 0.0;
}

std::string Settling::Describe(const ChannelInfo& channel) const {
    if (!m_value) {
        return channel.key + " gives no value";
    }
    std::string text = channel.key + " is " + DescribePlace(channel, *m_value, m_band);
    if (m_inBandSince && m_state == SettlingState::Waiting) {
        const double held = m_holdSeconds < 10.0 ? m_heldSeconds : std::floor(m_heldSeconds);
        text += ", for " + FormatDuration(held) + " of " + FormatDuration(m_holdSeconds);
    }
    return text;
}
