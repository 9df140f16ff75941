/*
 * The failing allocator: counts allocations, fails chosen ones and follows blocks until they are
 * freed. One source, three ways to use it:
 *   - link `failing_memory`: every allocation of the program, of libc and of each library;
 *   - preload a module that contains it: the same of a program that is run as it is installed;
 *   - link `failing_wrapped_memory`: only those of the objects and archives that the linker puts
 *     into the program, with sanitizers too.
 * One thread may be watched at a time.
 */
#pragma once

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct MemoryRequest {
    size_t number; /* from 1, since memory_watch() */
    size_t size;
    int is_realloc;
    const void *caller; /* the return address */
};

/*
 * Sees each request before it is counted; 0: this one is not counted and does not fail. What it
 * allocates itself is not watched.
 */
typedef int (*MemoryFilter)(const struct MemoryRequest *request);

enum MemoryMode { MEMORY_FAILS_ONCE, MEMORY_FAILS_ONWARD };

/*
 * Counts requests from now on, and fails number `fail_at` (0: none), alone or with all that come
 * after it. The filter may be null.
 */
void memory_watch(size_t fail_at, enum MemoryMode mode, MemoryFilter filter);

/* No further request fails; counting goes on. */
void memory_give_back(void);

/* Stops counting and failing. The results stay until the next memory_watch(). */
void memory_stop(void);

size_t memory_asked(void);  /* requests that were counted */
size_t memory_failed(void); /* of these */

/* The caller whose request was the first to fail; null: none has failed. */
const void *memory_first_refused(void);

/* Forgets all blocks, and follows those that are allocated from now on, or none. */
void memory_follow(int on);

size_t memory_live(void);       /* blocks that are followed and not freed */
size_t memory_first_live(void); /* the lowest number of one allocated while watched, or 0 */

#ifdef __cplusplus
}

/* Watches and follows while it lives. */
class MemoryWatch {
  public:
    explicit MemoryWatch(size_t fail_at = 0, MemoryMode mode = MEMORY_FAILS_ONCE,
                         MemoryFilter filter = nullptr) {
        memory_follow(1);
        memory_watch(fail_at, mode, filter);
    }
    ~MemoryWatch() {
        memory_stop();
        memory_follow(0);
    }
    MemoryWatch(const MemoryWatch &) = delete;
    MemoryWatch &operator=(const MemoryWatch &) = delete;
};
#endif
