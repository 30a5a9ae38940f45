// Win32-shaped loading of shared libraries, over dlopen.
//
// A handle from LoadLibrary goes back through FreeLibrary. Null handles are passed over
// silently. Failures give null or 0 and leave no pending dlerror text behind, so a later caller
// of dlerror sees only its own failure. Thread-safe as far as the dynamic loader is.
#ifndef VSM_SUPPORT_LIBRARY_LOADER_H_
#define VSM_SUPPORT_LIBRARY_LOADER_H_

namespace vsm {

// dlopen with RTLD_NOW, so that a library with unresolved symbols fails here and not at its
// first call. Null on failure, and for a null path (which would otherwise name the program).
void* LoadLibrary(const char* path);
// dlclose. 1 on success; 0 on failure or for a null handle.
int FreeLibrary(void* library);
// dlsym. Null when the symbol is missing or either argument is null.
void* GetProcAddress(void* library, const char* name);

}  // namespace vsm

#endif  // VSM_SUPPORT_LIBRARY_LOADER_H_
