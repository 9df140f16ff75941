/* Stops a program at each of its system calls, as debuggers do, and disturbs one of them. */
#pragma once

#include <sys/types.h>

#include "tests/faults/disturbance.h"

namespace reliability {

struct RunResult;

// In the child, before execve().
void be_traced();

// Follows the program and all it starts to their end; after the disturbance without stopping them.
void trace(pid_t program, const Disturbance &disturbance, RunResult &result);

}  // namespace reliability
