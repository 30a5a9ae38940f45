// Win32-shaped events on POSIX named semaphores.
//
// An event is a named semaphore: SetEvent posts (the count is not capped at one), a wait takes
// one count and, for a manual-reset event, puts it back so that every waiter passes. Waits poll
// with sem_trywait and short sleeps instead of blocking in the kernel. Each event lives in the
// system-wide semaphore name space, so generated names carry the process id, a process-wide
// counter and EventNameInstance, which keeps two module instances in one process apart.
//
// The creator owns an EventHandle and ends it with CloseEvent, which also removes the name.
// All functions take null handles without harm and are thread-safe for distinct handles; one
// handle may be set and waited on from several threads. Failures are printed on standard output
// (the log stands on these primitives) and show as null or 0 results.
#ifndef VSM_SUPPORT_EVENT_H_
#define VSM_SUPPORT_EVENT_H_

#include <semaphore.h>

#include <cstdint>

namespace vsm {

// Endless timeout, in milliseconds.
constexpr uint32_t INFINITE_WAIT = 0x7fffffff;
// Wait results besides 0 (signalled).
constexpr uint32_t WAIT_TIMED_OUT = 258;
constexpr uint32_t WAIT_ERROR = 0xFFFFFFFF;

struct EventHandle {
  sem_t* sem;
  // Non-zero: a successful wait leaves the event signalled.
  uint8_t manualReset;
  // The semaphore's name, kept for unlinking.
  char name[1031];
};

// The instance number that goes into generated semaphore names. DoAction stores it.
void SetEventNameInstance(int32_t instance);
int32_t GetEventNameInstance();

// Creates a new semaphore, failing when `name` is in use. A null `name` generates
// "ce0<pid>_<counter>_<instance>"; a caller's name is cut to 31 characters. `attributes` is
// ignored. Prints "CreateEvent sem_open failed <errno> name <name>" and gives null on failure.
EventHandle* CreateEvent(void* attributes, int manualReset, int initialState, const char* name);
// Opens an existing event by name, always as automatic reset. `access` and `inherit` are
// ignored. Prints "OpenEvent sem_open failed <errno>" and gives null on failure.
EventHandle* OpenEvent(uint32_t access, int inherit, const char* name);
// Posts once; 1, or 0 for null or failure.
int SetEvent(EventHandle* handle);
// Takes at most one count, deliberately not a drain: an event set twice and reset once stays
// set, as it always has. Always 1.
int ResetEvent(EventHandle* handle);
// 0 when signalled, WAIT_TIMED_OUT, or WAIT_ERROR. The budget is timeoutMs * 1000000 ns in
// unsigned 32 bits, so it wraps (5000 ms waits about 705 ms); kept deliberately, since a
// finite wait has always given up that early. A zero budget times out at once without looking at
// the event.
uint32_t WaitForEvent(EventHandle* handle, uint32_t timeoutMs);
// Closes and unlinks the semaphore and frees the record. Null does nothing.
void CloseEvent(EventHandle* handle);

}  // namespace vsm

#endif  // VSM_SUPPORT_EVENT_H_
