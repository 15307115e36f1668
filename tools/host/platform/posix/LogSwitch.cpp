#include "platform/LogSwitch.h"

LogSwitch::LogSwitch() { throw LogSwitchError("there is no registry here to set LogCommunication in"); }

LogSwitch::~LogSwitch() = default;
