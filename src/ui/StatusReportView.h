#pragma once

#include "oko/WindowHandle.h"

class CDevApiInterface_Impl;

/// Reads the status report and lays it out in the configuration dialog, which grows downward to hold it, and hides the
/// button that asked for it. Blocks for one exchange a row. On the user-interface thread.
void ShowStatusReport(CDevApiInterface_Impl& device, oko::WindowHandle dialog);
