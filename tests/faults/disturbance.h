/* The fault of one run, and its text on a command line. */
#pragma once

#include <string>

namespace reliability {

enum class Trouble { none, allocation, call, kill };

// Whose system calls are counted.
enum class Caller {
    program,  // the program's own
    command   // those of the shell commands that it starts
};

struct Disturbance {
    Trouble trouble = Trouble::none;
    Caller caller = Caller::program;
    size_t call = 0;   // its number in faulty_calls(); of Trouble::call
    size_t error = 0;  // its number among that call's errors
    // The number of the allocation, of the call of that name, or of the call, from 1. 0 only counts
    // allocations and notes their places.
    long at = 0;
    bool onward = false;  // each later allocation as well

    // "call program openat ENOSPC 3"
    std::string text() const;
};

// Reads what text() wrote; throws std::runtime_error.
Disturbance read_disturbance(const std::string &text);

}  // namespace reliability
