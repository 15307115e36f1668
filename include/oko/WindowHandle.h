#pragma once

namespace oko {

/// Window handle (HWND) and dialog procedure (DLGPROC), spelled so that the contract needs no Windows header: an HWND
/// converts by itself, the way back is a static_cast (reinterpret_cast for the procedure).
using WindowHandle = void*;
using DialogProcedure = void*;

}  // namespace oko
