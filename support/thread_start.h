// Win32-shaped thread start and stop on pthreads.
//
// StartThread gives a pointer to the new thread's pthread_t: the caller's `handle` when given,
// otherwise 8 bytes from malloc that the caller frees with free() after StopThread.
// `attributes`, `stackSize`, `flags` and `threadIdOut` are ignored (the thread gets default
// attributes). Thread-safe.
#ifndef VSM_SUPPORT_THREAD_START_H_
#define VSM_SUPPORT_THREAD_START_H_

#include <pthread.h>

#include <cstddef>
#include <cstdint>

namespace vsm {

using ThreadRoutine = void* (*)(void*);

// Null when pthread_create fails (a block taken from malloc is then given back).
pthread_t* StartThread(void* attributes, size_t stackSize, ThreadRoutine routine, void* argument,
                       uint32_t flags, uint32_t* threadIdOut, pthread_t* handle);
// -1 for null. A timeout other than INFINITE_WAIT cancels the thread first; then joins it and
// gives pthread_join's result.
int StopThread(pthread_t* handle, uint32_t timeoutMs);

}  // namespace vsm

#endif  // VSM_SUPPORT_THREAD_START_H_
