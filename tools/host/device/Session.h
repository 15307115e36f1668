#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "device/SettingsFile.h"
#include "oko/CDevApiInterface.h"

/// A device from its connection settings to Close. Close is called when the session ends, also after a failed Init. At
/// most one at a time: a host callback carries no context.
class Session {
 public:
    /// `beforeLine` is called before a line of the library is shown on the standard error output.
    explicit Session(CDevApiInterface& device, std::function<void()> beforeLine = {});
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Gives the device its settings and initialises it; without alarm settings it gets the usual ones. False when Init
    /// failed.
    bool Open(const Settings& settings);

    /// The lines that the library logged so far, and how often it said that the air mode changed.
    static const std::vector<std::string>& LogLines();
    static std::size_t AirModeChanges();

 private:
    CDevApiInterface& m_device;
};
