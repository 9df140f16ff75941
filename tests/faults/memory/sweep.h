// Runs one operation again and again; another of its allocations fails each time.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "operation.h"
#include "testing/failing_memory.h"

// Warm: in a process that has run the operation before. Cold: in a fresh process each time, where
// libraries are used for the first time; blocks that they keep for good are no leak.
enum class Form { kWarm, kCold };

struct Tally {
    std::size_t points = 0;    // runs in which at least one failed
    std::size_t asserted = 0;  // of these, ended by the documented assertion
    std::map<std::string, std::size_t> library_faults;  // fault of OpenSSL -> runs that it ended
    unsigned long outcomes = 0;  // a bit for each allowed outcome that occurred
    std::string complaint;       // the first, if any
    std::size_t complaints = 0;
};

// Runs the operation once for each of these allocations.
Tally sweep(const Operation &operation, Form form, MemoryMode mode,
            const std::vector<std::size_t> &points);

// The allocations of a run without a failure.
struct Needs {
    std::size_t allocations;
    std::vector<std::size_t> not_of_openssl;  // their numbers
};

// Throws when even that run goes wrong.
Needs count_allocations(const Operation &operation, Form form);
