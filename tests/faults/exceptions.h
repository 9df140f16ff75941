/* Exceptions from the invariants, each with its reason. */
#pragma once

#include <vector>

#include "tests/faults/invariants.h"

namespace reliability {

// A dump that may be lost, by design.
struct AllowedLoss {
    const char *name;
    const char *reason;
    bool (*applies)(const Observation &observed, const Dump &dump);
};
const std::vector<AllowedLoss> &allowed_losses();

// The name of the known fault of a library after a failed allocation, or null.
const char *known_library_fault(const RunResult &run);

}  // namespace reliability
