#pragma once

#include "oko/WindowHandle.h"

class LinkOperation;

/// Has the server search every port for every product, shows how far it is, and learns what it found. Unless the device
/// is already running, leaves the progress window "Connecting" open for the host's next steps. Blocks without pumping
/// messages for as long as the server searches. Ends early, without a window, when `operation` ends. Throws
/// std::bad_alloc.
void FindAndConnect(const LinkOperation& operation, oko::WindowHandle parent);
