// Opening and closing POSIX named semaphores, one call at a time.
//
// glibc keeps its table of open named semaphores behind a lock of its own that thread checkers
// can't see, so concurrent sem_open and sem_close calls look like data races to them. Events and
// semaphores are opened and closed only when a lock is contended, so serialising these calls
// behind one process-wide mutex costs nothing on the fast path. errno is left as the call set it.
#ifndef VSM_SUPPORT_NAMED_SEMAPHORE_H_
#define VSM_SUPPORT_NAMED_SEMAPHORE_H_

#include <semaphore.h>

namespace vsm {

// sem_open(name, flags, 0666, value).
sem_t* OpenNamedSemaphore(const char* name, int flags, unsigned value);
// sem_close(sem).
int CloseNamedSemaphore(sem_t* sem);

}  // namespace vsm

#endif  // VSM_SUPPORT_NAMED_SEMAPHORE_H_
