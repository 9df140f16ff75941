// The process in which an operation is tortured, and its report to the parent.
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
    unsigned long outcomes;  // a bit for each allowed outcome that occurred
    bool blocks_left;        // by the run before
    char complaint[4096];    // of the point under way
    char fault[256];         // the place of a signal or an endless wait
};

extern Report *g_report;

// Shares g_report between this process and those that it forks.
void share_report();

// Redirects a worker's streams. Those of stdio get their buffers before memory is watched.
void take_streams();
void empty_streams();

bool is_in_openssl(const void *address);

// From now on the report names the place of a signal or an endless wait.
void watch_faults();
