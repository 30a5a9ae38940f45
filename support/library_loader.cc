#include "support/library_loader.h"

#include <dlfcn.h>

namespace vsm {

void* LoadLibrary(const char* path) {
  if (path == nullptr) return nullptr;
  void* library = dlopen(path, RTLD_NOW);
  if (library == nullptr) dlerror();
  return library;
}

int FreeLibrary(void* library) {
  if (library == nullptr) return 0;
  if (dlclose(library) != 0) {
    dlerror();
    return 0;
  }
  return 1;
}

void* GetProcAddress(void* library, const char* name) {
  if (library == nullptr || name == nullptr) return nullptr;
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) dlerror();
  return symbol;
}

}  // namespace vsm
