/*
 * What holds after every run, whatever went wrong during it. One function checks all of it; what is
 * excepted is listed in exceptions.h.
 */
#pragma once

#include <string>
#include <vector>

#include "depot.h"
#include "device.h"
#include "disturbed_run.h"
#include "kinds.h"

namespace reliability {

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
