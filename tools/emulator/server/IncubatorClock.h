#pragma once

namespace emulator {

/// How the incubator's own time passes while the real one does.
class IncubatorClock {
 public:
    /// What of it passed since the last call, at the real time `now` in seconds.
    double TakePassed(double now) {
        const double passed = m_paused ? 0.0 : (now - m_last) * m_speed;
        m_last = now;
        return passed;
    }

    double Speed() const { return m_speed; }
    bool IsPaused() const { return m_paused; }

    /// Holds from the last call of TakePassed on.
    void SetSpeed(double speed) { m_speed = speed; }
    void SetPaused(bool paused) { m_paused = paused; }

 private:
    double m_speed = 1.0;
    double m_last = 0.0;
    bool m_paused = false;
};

}  // namespace emulator
