
#include "core/Exports.h"
#include "platform/win32/Windows.h"

#ifdef __GLIBCXX__
namespace __gnu_cxx {
// Part of the run-time, declared in none of its headers.
void __freeres();  // NOLINT(bugprone-reserved-identifier,misc-use-internal-linkage,readability-identifier-naming)
}  // namespace __gnu_cxx
#endif

namespace {

/// The statically linked run-time takes 73 KB for exceptions in want of memory when it is loaded, and keeps them. To a
/// process that ends this is nothing; to a host that loads the library again and again it adds up.
void FreeRuntimeReserve() noexcept {
#ifdef __GLIBCXX__
    __gnu_cxx::__freeres();
#endif
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_ATTACH) {
        AttachModule(instance);
    } else if (reason == DLL_PROCESS_DETACH) {
        DetachModule();
        if (processEnds == nullptr) {
            FreeRuntimeReserve();
        }
    }
    return TRUE;
}
