#pragma once

#include "oko/WindowHandle.h"

class CDevApiInterface_Impl;

/// Opens the child panel "INCUBATOR_DIALOG1" in `parent`, and its dialog procedure, which handles no message. Null when
/// it cannot be opened. On the user-interface thread.
oko::WindowHandle OpenValuePanel(CDevApiInterface_Impl& device, oko::WindowHandle parent) noexcept;
void* ValuePanelProcedure() noexcept;
