// Win32-shaped counting semaphores on POSIX named semaphores.
//
// `count` in the handle tracks posts minus successful waits made through this handle; it starts
// at 0 whatever the initial value was. Unlike an event, a semaphore's name is not unlinked by
// CloseSemaphore (the handle does not even keep it): whoever needs the name gone calls
// sem_unlink. Null handles are harmless. Failures are printed on standard output.
#ifndef VSM_SUPPORT_SEMAPHORE_H_
#define VSM_SUPPORT_SEMAPHORE_H_

#include <semaphore.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace vsm {

struct SemaphoreHandle {
  sem_t* sem;
  std::atomic<int32_t> count;
};

// Size of the buffer a generated semaphore name is formatted into.
constexpr size_t kSemaphoreNameSize = 1024;

// Zeroes `buffer` (kSemaphoreNameSize bytes) and writes the next generated name,
// "Sem<pid>_<counter>_<EventNameInstance>", into it.
void GenerateSemaphoreName(char* buffer);

// Creates a new semaphore holding `initialCount`; fails when the name is in use. A null `name`
// is generated. `attributes` and `maximumCount` are ignored. Prints "sem_open failed <errno>"
// and gives null on failure.
SemaphoreHandle* CreateSemaphore(void* attributes, int32_t initialCount, int32_t maximumCount,
                                 const char* name);
// Posts once (`amount` is ignored) and stores the count before the post in `previousCount`
// when given. 0 for null; 1 otherwise, also when the post failed (which is printed and leaves
// the count alone).
int ReleaseSemaphore(SemaphoreHandle* handle, int32_t amount, int32_t* previousCount);
// 0 when a count was taken, 0xFFFFFFFF on timeout or for null. INFINITE_WAIT blocks in
// sem_wait; a failure there is printed and still gives 0. Finite waits poll in steps of an
// eighth of the timeout (at least 1 ms).
uint32_t WaitForSemaphore(SemaphoreHandle* handle, uint32_t timeoutMs);
// Closes the semaphore and frees the record; the name stays. Null does nothing.
void CloseSemaphore(SemaphoreHandle* handle);

}  // namespace vsm

#endif  // VSM_SUPPORT_SEMAPHORE_H_
