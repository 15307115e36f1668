#pragma once

#include <cstdint>
#include <optional>

#include "platform/UdpSocket.h"

class CDevApiInterface_Impl;

/// One or more exchanges that belong together. Close, slot 7 and a search may take the link away at any time, from any
/// thread; what is left of an operation must then not go over a link that somebody else has opened. So every link has a
/// number (m_nLink), and an operation that finds another one has ended: its exchanges send nothing and give no answer.
///
/// Belongs to one thread and lives on its stack.
class LinkOperation {
 public:
    /// What a reply that does not come in time means for the rest.
    enum class OnTimeout { GoOn, End };

    /// Implicit: a single exchange takes whatever link there is.
    LinkOperation(CDevApiInterface_Impl& device) noexcept : m_device(device) {}

    /// All exchanges go over link number `link`, or nowhere.
    LinkOperation(CDevApiInterface_Impl& device, std::uint32_t link, OnTimeout onTimeout = OnTimeout::GoOn) noexcept
        : m_device(device), m_nLink(link), m_onTimeout(onTimeout) {}

    /// All exchanges go over the link that is there now.
    static LinkOperation OverThisLink(CDevApiInterface_Impl& device) noexcept;

    CDevApiInterface_Impl& Device() const noexcept { return m_device; }
    std::optional<std::uint32_t> Link() const noexcept { return m_nLink; }

    /// The link is another one by now.
    bool HasLostLink() const noexcept;

    /// A reply did not come in time.
    bool HasTimedOut() const noexcept { return m_bTimedOut; }

    /// Nothing is sent any more.
    bool HasEnded() const noexcept { return HasLostLink() || (m_bTimedOut && m_onTimeout == OnTimeout::End); }

    /// Takes how an exchange of this operation ended.
    void Note(ReceiveOutcome outcome) const noexcept {
        m_bTimedOut = m_bTimedOut || outcome == ReceiveOutcome::TimedOut;
    }

 private:
    CDevApiInterface_Impl& m_device;
    std::optional<std::uint32_t> m_nLink;  // none: any
    OnTimeout m_onTimeout = OnTimeout::GoOn;
    mutable bool m_bTimedOut = false;  // mutable: a single exchange is handed on as a temporary
};
