/*
 * Preloaded into the program under test: counts its allocations from main() on, and fails the one
 * of FAULTY_MEMORY_AT (with FAULTY_MEMORY_ONWARD every later one too). Allocations made inside the
 * C library go through these functions as well. The programs that the program starts are let alone.
 *
 * A failure that a library keeps to itself can leave it waiting for its time limit of minutes; so
 * the clock that it asks runs fast once a run has taken longer than any should.
 *
 * FAULTY_MEMORY_RECORD gets the functions in which the first allocation failed, innermost first,
 * each marked with "<"; the same of a fault, without the mark; and at the program's end the count.
 * main()'s beginning is told to a tracer with a system call that does not exist.
 */
#define _GNU_SOURCE
#include "faulty_memory.h"

#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

static long made;
static long failing;
static int onward;
static int notes_places;
static int is_steady;
static int counting;
static int record = -1;

/* Makes `function`, when it is still null, the next one of that name, perhaps a memory checker's.
 * Finding it allocates nothing. */
static void find_next(void *function, const char *name) {
    if (*(void **)function == NULL)
        *(void **)function = dlsym(RTLD_NEXT, name);
}

static void tell(const char *text) {
    if (record >= 0 && write(record, text, strlen(text)) < 0)
        record = -1;
}

static void tell_place(const char *mark, void *address) {
    Dl_info place;
    if (dladdr(address, &place) == 0 || place.dli_fname == NULL)
        return;
    const char *const slash = strrchr(place.dli_fname, '/');
    tell(mark);
    tell(slash != NULL ? slash + 1 : place.dli_fname);
    tell(" ");
    tell(place.dli_sname != NULL ? place.dli_sname : "?");
    tell("\n");
}

static void tell_frames(const char *mark, int without) {
    enum { kDeepest = 64 };
    void *frames[kDeepest];
    const int was_counting = counting;
    counting = 0;
    const int depth = backtrace(frames, kDeepest);
    for (int i = without; i < depth; ++i)
        tell_place(mark, frames[i]);
    counting = was_counting;
}

/* Whether these calls led to an allocation for the first time. */
static int is_new(void **frames, int depth) {
    enum { kMostPlaces = 1 << 16 };
    static uint64_t known[kMostPlaces];
    uint64_t hash = 14695981039346656037u;
    for (int i = 0; i < depth; ++i)
        hash = (hash ^ (uint64_t)frames[i]) * 1099511628211u;
    hash |= 1;
    size_t at = hash % kMostPlaces;
    while (known[at] != 0 && known[at] != hash)
        at = (at + 1) % kMostPlaces;
    const int first = known[at] == 0;
    known[at] = hash;
    return first;
}

static void note_place(long number) {
    enum { kDeepest = 128 };
    void *frames[kDeepest];
    char line[32];
    counting = 0;
    if (is_new(frames, backtrace(frames, kDeepest))) {
        snprintf(line, sizeof line, "#%ld\n", number);
        tell(line);
    }
    counting = 1;
}

static int fails(void) {
    enum { kOwnFrames = 3 };
    if (!counting)
        return 0;
    const long number = ++made;
    if (notes_places)
        note_place(number);
    if (failing == 0 || (onward ? number < failing : number != failing))
        return 0;
    if (number == failing)
        tell_frames("<", kOwnFrames);
    errno = ENOMEM;
    return 1;
}

void *malloc(size_t size) {
    static void *(*next)(size_t);
    find_next(&next, "malloc");
    return fails() ? NULL : next(size);
}

void *calloc(size_t count, size_t size) {
    static void *(*next)(size_t, size_t);
    find_next(&next, "calloc");
    return fails() ? NULL : next(count, size);
}

void *realloc(void *old, size_t size) {
    static void *(*next)(void *, size_t);
    find_next(&next, "realloc");
    return fails() ? NULL : next(old, size);
}

void *reallocarray(void *old, size_t count, size_t size) {
    size_t total;
    if (__builtin_mul_overflow(count, size, &total)) {
        errno = ENOMEM;
        return NULL;
    }
    return realloc(old, total);
}

void *memalign(size_t alignment, size_t size) {
    static void *(*next)(size_t, size_t);
    find_next(&next, "memalign");
    return fails() ? NULL : next(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void **out, size_t alignment, size_t size) {
    void *const memory = memalign(alignment, size);
    if (memory == NULL)
        return ENOMEM;
    *out = memory;
    return 0;
}

int clock_gettime(clockid_t clock, struct timespec *out) {
    enum { kUsualMilliseconds = 500, kHaste = 200, kThousand = 1000 };
    static int (*next)(clockid_t, struct timespec *);
    struct timespec used;
    find_next(&next, "clock_gettime");
    const int result = next(clock, out);
    if (result != 0 || clock != CLOCK_MONOTONIC || is_steady ||
        next(CLOCK_PROCESS_CPUTIME_ID, &used) != 0)
        return result;
    const long busy = used.tv_sec * kThousand + used.tv_nsec / (kThousand * kThousand);
    if (busy > kUsualMilliseconds)
        out->tv_sec += (busy - kUsualMilliseconds) * kHaste / kThousand;
    return 0;
}

static void on_fault(int number) {
    enum { kOwnFrames = 3 };
    counting = 0;
    tell_frames("", kOwnFrames);
    signal(number, SIG_DFL);
    raise(number);
}

static long number_in(const char *name) {
    const char *const text = getenv(name);
    return text != NULL ? atol(text) : 0;
}

__attribute__((constructor)) static void begin(void) {
    static const int kFaults[] = {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL};
    const char *const path = getenv(FAULTY_MEMORY_RECORD);
    if (strcmp(program_invocation_short_name, "kdump") != 0)
        return; /* a memory checker on its way to the program */
    void *frame;
    unsetenv("LD_PRELOAD");
    if (path != NULL) {
        record = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        failing = number_in(FAULTY_MEMORY_AT);
        onward = getenv(FAULTY_MEMORY_ONWARD) != NULL;
        is_steady = getenv(FAULTY_MEMORY_STEADY) != NULL;
        notes_places = getenv(FAULTY_MEMORY_PLACES) != NULL;
        backtrace(&frame, 1); /* loads what it needs now, not in the handler */
        for (size_t i = 0; i < sizeof kFaults / sizeof *kFaults; ++i)
            signal(kFaults[i], on_fault);
        counting = 1;
    }
    syscall(FAULTY_MEMORY_MAIN_BEGINS);
}

__attribute__((destructor)) static void end(void) {
    char line[32];
    counting = 0;
    snprintf(line, sizeof line, "%ld\n", made);
    tell(line);
}
