/* Runs the program once on the device, disturbed at one exact place. */
#pragma once

#include <string>
#include <vector>

#include "tests/faults/disturbance.h"

namespace reliability {

struct CallCounts {
    long all = 0;
    std::vector<long> faulty;  // of each of faulty_calls()
};

struct RunResult {
    bool disturbed = false;                  // the place was reached
    bool killed = false;                     // by the disturbance
    bool gave_up = false;                    // ended at its last permitted sleep
    bool overdue = false;                    // had to be ended, since it did not end
    int status = 0;                          // as wait() tells it, of the program
    std::string path;                        // which the disturbed call names
    long allocations = 0;                    // made, when they are counted
    std::vector<long> places;                // numbers of those that were the first at their place
    std::vector<std::string> failed_frames;  // "library function": where an allocation failed
    std::vector<std::string> fault_frames;   // "library function", when it faulted over memory
    CallCounts own_calls, command_calls;     // of an undisturbed run
    std::vector<std::string> changed;        // paths that were opened for writing, removed, ...
};

// Starts a program, called kdump, in the working directory and waits until it and all it started
// have ended. One that takes far too long is ended; a slow one may take its time.
RunResult run_disturbed(const std::vector<std::string> &command, const Disturbance &disturbance,
                        bool slow);

}  // namespace reliability
