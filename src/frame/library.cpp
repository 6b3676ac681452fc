#include "ornex_rt.h"

#include "ornex_build_info.h"

// Exported through their declarations in the public header.
extern "C" const char *const ornex_rt_version = ORNEX_RT_VERSION_STRING;
extern "C" const char *const ornex_rt_build_date = ORNEX_RT_BUILD_DATE_STRING;

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// Runs after the runtime's static initialisation. The library has no
// per-thread state, so thread notifications are switched off.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID)
{
    if (reason == DLL_PROCESS_ATTACH) {
        DisableThreadLibraryCalls(module);
    }
    return TRUE;
}
#endif
