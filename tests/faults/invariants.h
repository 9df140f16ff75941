/* Checks the invariants of every run, whatever fault it met. exceptions.h lists the exceptions. */
#pragma once

#include <string>
#include <vector>

#include "testing/kinds.h"
#include "tests/faults/device.h"
#include "tests/faults/disturbed_run.h"

namespace reliability {

using world::Dump;
using world::Kind;

// An upload that arrived whole and was answered.
struct Upload {
    std::string body;
    int status = 0;
};

struct Observation {
    const Kind *kind = nullptr;
    Disturbance disturbance;
    RunResult run;
    Files before;
    Files after;
    std::vector<Upload> uploads;
    std::string console;
};

struct Verdict {
    std::vector<std::string> violations;
    std::vector<const char *> exceptions;  // those that applied
    int lost = 0;                          // dumps, outside of the exceptions
};

Verdict check(const Observation &observed);

// The same for a run that found the marker of an earlier one.
Verdict check_busy(const Observation &observed);

// Whether the cloud got each dump of `files`, from this or an earlier run.
std::vector<std::string> missing_in_cloud(const Kind &kind, const Files &files,
                                          const std::vector<Upload> &uploads);

}  // namespace reliability
