#pragma once

#include "oko/WindowHandle.h"
#include "ui/DialogEnd.h"

class CDevApiInterface_Impl;

/// Runs the modal dialog "INCUBATOR_CONNECTION" over `parent` and gives its end: Ok and FindAndConnect after the device
/// took the choice. On the user-interface thread.
DialogEnd RunConnectionDialog(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept;
