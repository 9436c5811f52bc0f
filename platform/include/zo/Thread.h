#ifndef ZO_THREAD_H
#define ZO_THREAD_H

namespace zo {
namespace thread {

struct Handle;
typedef void* (*Entry)(void* argument);

// Starts a detached platform thread that runs entry(argument). `handle` may be null when the caller
// keeps no handle; `priority` is the platform's scheduling class (negative values select the
// platform's predefined classes). Returns 0 when the thread was started.
int create(Handle** handle, Entry entry, void* argument, int priority, const char* name);

// Blocks the calling thread for `milliseconds`.
void sleep(unsigned int milliseconds);

}  // namespace thread
}  // namespace zo

#endif
