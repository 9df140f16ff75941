/* Stops a program at each of its system calls, as debuggers do, and disturbs one of them. */
#pragma once

#include <sys/types.h>

#include "disturbance.h"

namespace reliability {

struct RunResult;

// In the child, before execve().
void be_traced();

// Follows the program and what it starts until the disturbance has happened or everything has
// ended. What still runs then is left to itself.
void trace(pid_t program, const Disturbance &disturbance, RunResult &result);

}  // namespace reliability
