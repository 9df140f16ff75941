#define _GNU_SOURCE
#include "testing/failing_memory.h"

#include <dlfcn.h>
#include <errno.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

/* NAME(malloc) is what the program calls, NEXT(malloc) the allocator behind this one. */
#ifdef FAILING_MEMORY_IS_WRAPPED
#define NAME(function) __wrap_##function
#define NEXT(result, function, parameters) \
    result __real_##function parameters;   \
    static result(*const next) parameters = __real_##function
#else
/* Perhaps a memory checker's. Finding it allocates nothing. */
#define NAME(function) function
#define NEXT(result, function, parameters) \
    static result(*next) parameters;       \
    find_next(&next, #function)

static void find_next(void *function, const char *name) {
    if (*(void **)function == NULL)
        *(void **)function = dlsym(RTLD_NEXT, name);
}
#endif

/* A power of two, at least twice the most blocks that are followed at a time. */
#ifdef FAILING_MEMORY_IS_WRAPPED
enum { kPlaces = 1 << 21 };
#else
enum { kPlaces = 1 << 16 };
#endif

struct Block {
    void *address;
    size_t number; /* of its request, 0 outside of a watch */
    size_t watch;
};

static struct Block blocks[kPlaces]; /* by address; the next free place when that is taken */
static int following;
static size_t live;

static int watching;
static size_t watches;
static size_t failing;
static enum MemoryMode failing_mode;
static MemoryFilter concerns;
static size_t asked;
static size_t failed;
static const void *first_refused;

static size_t place_of(const void *address) {
    return (size_t)((((uint64_t)(uintptr_t)address >> 4) * 0x9E3779B97F4A7C15u) >> 40) % kPlaces;
}

static void remember(void *address) {
    size_t at = place_of(address);
    while (blocks[at].address != NULL)
        at = (at + 1) % kPlaces;
    blocks[at] = (struct Block){address, watching ? asked : 0, watches};
    if (++live > kPlaces / 2)
        abort(); /* the table is too small for its task */
}

/* Takes an entry out and moves up those that would no longer be found behind the gap. */
static void take_out(size_t gap) {
    for (size_t at = (gap + 1) % kPlaces; blocks[at].address != NULL; at = (at + 1) % kPlaces) {
        if ((at - place_of(blocks[at].address)) % kPlaces >= (at - gap) % kPlaces) {
            blocks[gap] = blocks[at];
            gap = at;
        }
    }
    blocks[gap] = (struct Block){NULL, 0, 0};
    --live;
}

static void forget(const void *address) {
    if (address == NULL || !following)
        return;
    for (size_t at = place_of(address); blocks[at].address != NULL; at = (at + 1) % kPlaces) {
        if (blocks[at].address == address) {
            take_out(at);
            return;
        }
    }
}

static void *followed(void *address) {
    if (following && address != NULL)
        remember(address);
    return address;
}

static int is_counted(const struct MemoryRequest *request) {
    if (concerns == NULL)
        return 1;
    const int followed_before = following;
    watching = following = 0;
    const int counted = concerns(request);
    following = followed_before;
    watching = 1;
    return counted;
}

static int fails(size_t size, int is_realloc, const void *caller) {
    const struct MemoryRequest request = {asked + 1, size, is_realloc, caller};
    if (!watching || !is_counted(&request))
        return 0;
    ++asked;
    if (failing == 0 || (failing_mode == MEMORY_FAILS_ONCE ? asked != failing : asked < failing))
        return 0;
    if (failed++ == 0)
        first_refused = caller;
    errno = ENOMEM;
    return 1;
}

void *NAME(malloc)(size_t size) {
    NEXT(void *, malloc, (size_t));
    return fails(size, 0, __builtin_return_address(0)) ? NULL : followed(next(size));
}

void *NAME(calloc)(size_t count, size_t size) {
    NEXT(void *, calloc, (size_t, size_t));
    return fails(count * size, 0, __builtin_return_address(0)) ? NULL : followed(next(count, size));
}

static void *resized(void *old, size_t size, const void *caller) {
    NEXT(void *, realloc, (void *, size_t));
    if (fails(size, 1, caller))
        return NULL;
    forget(old);
    return followed(next(old, size));
}

void *NAME(realloc)(void *old, size_t size) {
    return resized(old, size, __builtin_return_address(0));
}

void NAME(free)(void *block) {
    NEXT(void, free, (void *));
    forget(block);
    next(block);
}

#ifndef FAILING_MEMORY_IS_WRAPPED

void *reallocarray(void *old, size_t count, size_t size) {
    size_t total;
    if (__builtin_mul_overflow(count, size, &total)) {
        errno = ENOMEM;
        return NULL;
    }
    return resized(old, total, __builtin_return_address(0));
}

static void *aligned(size_t alignment, size_t size, const void *caller) {
    NEXT(void *, memalign, (size_t, size_t));
    return fails(size, 0, caller) ? NULL : followed(next(alignment, size));
}

void *memalign(size_t alignment, size_t size) {
    return aligned(alignment, size, __builtin_return_address(0));
}

void *aligned_alloc(size_t alignment, size_t size) {
    return aligned(alignment, size, __builtin_return_address(0));
}

int posix_memalign(void **out, size_t alignment, size_t size) {
    void *const memory = aligned(alignment, size, __builtin_return_address(0));
    if (memory == NULL)
        return ENOMEM;
    *out = memory;
    return 0;
}

#endif

void memory_watch(size_t fail_at, enum MemoryMode mode, MemoryFilter filter) {
    ++watches;
    failing = fail_at;
    failing_mode = mode;
    concerns = filter;
    asked = failed = 0;
    first_refused = NULL;
    watching = 1;
}

void memory_give_back(void) { failing = 0; }

void memory_stop(void) { watching = 0; }

size_t memory_asked(void) { return asked; }

size_t memory_failed(void) { return failed; }

const void *memory_first_refused(void) { return first_refused; }

void memory_follow(int on) {
    if (live != 0)
        memset(blocks, 0, sizeof blocks);
    live = 0;
    following = on;
}

size_t memory_live(void) { return live; }

size_t memory_first_live(void) {
    size_t first = 0;
    for (size_t at = 0; at < kPlaces; ++at) {
        if (blocks[at].watch == watches && blocks[at].number != 0 &&
            (first == 0 || blocks[at].number < first))
            first = blocks[at].number;
    }
    return first;
}
