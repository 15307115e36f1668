#pragma once

#include "oko/WindowHandle.h"

class CDevApiInterface_Impl;

/// Has the server search every port for every product, shows how far it is, and learns what it found. Unless the device
/// is already running, leaves the progress window "Connecting" open for the host's next steps. Blocks without pumping
/// messages for as long as the server searches. Throws std::bad_alloc.
void FindAndConnect(CDevApiInterface_Impl& device, oko::WindowHandle parent);
