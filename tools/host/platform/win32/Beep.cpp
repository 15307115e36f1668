#include "platform/Beep.h"

#include <windows.h>

void SoundWarning() noexcept { MessageBeep(MB_ICONWARNING); }
