#include "platform/WaitCursor.h"

#include "platform/win32/Windows.h"

WaitCursor::WaitCursor() noexcept : m_hPrevious(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}

WaitCursor::~WaitCursor() { SetCursor(static_cast<HCURSOR>(m_hPrevious)); }
