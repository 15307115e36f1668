#pragma once

#include "oko/WindowHandle.h"
#include "ui/DialogEnd.h"

class CDevApiInterface_Impl;

/// Runs the modal dialog "INCUBATOR_CONFIGURATION" over `parent` and gives its end: Ok after the fields were taken into
/// the device. On the user-interface thread.
DialogEnd RunConfigurationDialog(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept;
