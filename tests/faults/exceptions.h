/* Exceptions from the invariants, each with its reason. */
#pragma once

#include <vector>

#include "tests/faults/invariants.h"

namespace reliability {

struct Exception {
    const char *name;
    const char *reason;
    bool (*applies)(const Observation &observed, const Dump &dump);
};

// Dumps that may be lost by design: the kind sends its source itself.
const std::vector<Exception> &losses_by_design();
// Dumps that are lost because the result of a step is not tested, by design too.
const std::vector<Exception> &forced_losses();

// A fault of a library after a failed allocation: all calls between the allocation and libcurl are
// the library's, `function` among them.
struct LibraryFault {
    const char *name;
    bool is_overdue;  // the run does not end; otherwise a signal ends it
    const char *library;
    const char *function;
    const char *reason;
};
const std::vector<LibraryFault> &library_faults();
const LibraryFault *known_fault(const RunResult &run);

}  // namespace reliability
