/*
 * Preloaded into the program under test with testing/failing_memory.c: counts its allocations from
 * main() on, and fails the one of FAULTY_MEMORY_AT (with FAULTY_MEMORY_ONWARD every later one too).
 * Programs that the program starts are not watched.
 *
 * After some failures libcurl waits for its time limit of minutes; so the clock that it asks runs
 * fast once a run has taken longer than any should.
 *
 * FAULTY_MEMORY_RECORD receives the functions in which the first allocation failed, innermost
 * first, each marked with "<"; those of a fault, without the mark; and at the end the count. A
 * system call that does not exist tells a tracer that main() begins.
 */
#define _GNU_SOURCE
#include "faulty_memory.h"

#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <signal.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "testing/failing_memory.h"

static size_t failing;
static int notes_places;
static int is_steady;
static int record = -1;

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

/* The calls that lead here, from the one behind `caller` or, when that is null, from number 3 on.
 */
static void tell_frames(const char *mark, const void *caller) {
    enum { kDeepest = 64, kOwnFrames = 3 };
    void *frames[kDeepest];
    const int depth = backtrace(frames, kDeepest);
    int first = caller == NULL ? kOwnFrames : 0;
    while (caller != NULL && first < depth - 1 && frames[first] != caller)
        ++first;
    for (int i = first; i < depth; ++i)
        tell_place(mark, frames[i]);
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

static int note(const struct MemoryRequest *request) {
    enum { kDeepest = 128 };
    void *frames[kDeepest];
    char line[32];
    if (notes_places && is_new(frames, backtrace(frames, kDeepest))) {
        snprintf(line, sizeof line, "#%zu\n", request->number);
        tell(line);
    }
    if (request->number == failing)
        tell_frames("<", request->caller);
    return 1;
}

int clock_gettime(clockid_t clock, struct timespec *out) {
    enum { kUsualMilliseconds = 500, kHaste = 200, kThousand = 1000 };
    static int (*next)(clockid_t, struct timespec *);
    struct timespec used;
    if (next == NULL)
        *(void **)&next = dlsym(RTLD_NEXT, "clock_gettime");
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
    memory_stop();
    tell_frames("", NULL);
    signal(number, SIG_DFL);
    raise(number);
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
        const char *const at = getenv(FAULTY_MEMORY_AT);
        failing = at != NULL ? strtoul(at, NULL, 10) : 0;
        is_steady = getenv(FAULTY_MEMORY_STEADY) != NULL;
        notes_places = getenv(FAULTY_MEMORY_PLACES) != NULL;
        backtrace(&frame, 1); /* loads what it needs now, not in the handler */
        for (size_t i = 0; i < sizeof kFaults / sizeof *kFaults; ++i)
            signal(kFaults[i], on_fault);
        memory_watch(failing,
                     getenv(FAULTY_MEMORY_ONWARD) != NULL ? MEMORY_FAILS_ONWARD : MEMORY_FAILS_ONCE,
                     note);
    }
    syscall(FAULTY_MEMORY_MAIN_BEGINS);
}

__attribute__((destructor)) static void end(void) {
    char line[32];
    memory_stop();
    snprintf(line, sizeof line, "%zu\n", memory_asked());
    tell(line);
}
