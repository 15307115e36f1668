#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "device/SettingsFile.h"
#include "oko/CDevApiInterface.h"

/// A device from its connection settings to Close. Close is called when the session ends, also after a failed Init. At
/// most one at a time: a host callback carries no context.
class Session {
 public:
    /// `onLine` is called with each line that the library logs, on the thread that called into the library.
    Session(CDevApiInterface& device, std::function<void(const std::string&)> onLine);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Gives the device its connection, initialises it and applies the alarm settings where there are any: without, the
    /// server keeps those that it has. False when Init failed.
    bool Open(const Settings& settings);

    /// How often the library logged a line, and said that the air mode changed.
    static std::size_t LogLines();
    static std::size_t AirModeChanges();

 private:
    CDevApiInterface& m_device;
};
