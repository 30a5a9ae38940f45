/* A host in ten lines: loads the installed module and prints the answer to one command. */
#include <dlfcn.h>
#include <stdio.h>
#include <vsm.h>
static char Print(unsigned k, unsigned long long c, const char* t, const void* b, unsigned n,
                  long long e) {
  return fputs(t, stdout) >= 0;
}
int main(void) {
  void* module = dlopen(VSM_MODULE, RTLD_NOW);
  if (module == NULL) return fprintf(stderr, "%s\n", dlerror()), 1;
  __typeof__(DoAction)* start = (__typeof__(DoAction)*)dlsym(module, "DoAction");
  __typeof__(DistributeCommand)* run =
      (__typeof__(DistributeCommand)*)dlsym(module, "DistributeCommand");
  start(0, NULL, NULL, 0);
  return run(1, 0, 0, "/vsm/", "{\"id\":\"1\",\"cmdId\":\"2\",\"method\":\"ChangePort\"}", NULL, 0,
             1, &Print, 0, "http://127.0.0.1", 0, 0, 0) == 1
             ? 0
             : 1;
}
