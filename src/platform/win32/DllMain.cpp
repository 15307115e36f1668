#include "core/Exports.h"
#include "platform/win32/Windows.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        AttachModule(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        DetachModule();
    }
    return TRUE;
}
