// RecursiveMutex: one pthread mutex of the recursive type, with explicit Init and Destroy.
//
// The owner calls Init before first use and Destroy after last use; the thread that holds the
// mutex may lock it again, and must unlock it as often. Failures are printed on standard output
// (with errno, which is what the messages have always reported) and otherwise ignored: callers
// go on as if the call had worked. The primitives report with printf rather than the module's
// log, because the log itself stands on them.
#ifndef VSM_SUPPORT_RECURSIVE_MUTEX_H_
#define VSM_SUPPORT_RECURSIVE_MUTEX_H_

#include <pthread.h>

namespace vsm {

class RecursiveMutex {
 public:
  // Not initialised yet; Init makes it usable.
  RecursiveMutex() = default;
  RecursiveMutex(const RecursiveMutex&) = delete;
  RecursiveMutex& operator=(const RecursiveMutex&) = delete;

  void Init();
  void Destroy();
  void Lock();
  void Unlock();

 private:
  // Starts as a plain default mutex, so that even a failed Init leaves something lockable.
  pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

}  // namespace vsm

#endif  // VSM_SUPPORT_RECURSIVE_MUTEX_H_
