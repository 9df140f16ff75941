// The process in which an operation is tortured, and what it tells the one that waits for it.
#pragma once

#include <cstddef>

constexpr std::size_t kMostAllocations = 1 << 15;
constexpr unsigned kPatienceSeconds = 20;
constexpr int kEndlessWait = 3;  // exit status

inline constexpr const char *kErrors = "/run/world/torture/errors";  // a worker's standard error

// A worker's report; it survives a worker that a signal ends.
struct Report {
    std::size_t allocations;
    bool of_openssl[kMostAllocations];  // by number, the first is 1
    std::size_t index;                  // of the point under way
    std::size_t points;
    unsigned long outcomes;  // a bit for each of those allowed that came
    bool blocks_left;        // by the run before
    char complaint[4096];    // of the point under way
    char fault[256];         // where a signal met it
};

extern Report *g_report;

// Memory that this process and those it forks share, once.
void share_report();

// The streams of a worker; those of stdio have their buffers before memory is watched.
void take_streams();
void empty_streams();

bool is_in_openssl(const void *address);

// From now on signals and endless waits are told.
void watch_faults();
