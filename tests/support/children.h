// Processes that do the same work at the same time.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <vector>

// Ends a child without this process's clean-up; what it ran is counted all the same.
#ifdef CLOUD_COVERAGE
extern "C" void __gcov_dump();
[[noreturn]] inline void end_child(int status) {
    __gcov_dump();
    _exit(status);
}
#else
[[noreturn]] inline void end_child(int status) { _exit(status); }
#endif

// Starts `count` processes that wait for each other, run work(0), work(1)... and end with its
// result (0 to 254; 255 when one was killed). Returns the results in order.
inline std::vector<int> run_together(int count, const std::function<int(int)> &work) {
    int gate[2];
    if (pipe(gate) != 0) {
        std::abort();
    }
    std::vector<pid_t> children;
    for (int i = 0; i < count; ++i) {
        const pid_t child = fork();
        if (child == 0) {
            close(gate[1]);
            char nothing;
            (void)!read(gate[0], &nothing, 1);  // returns when the parent opens the gate
            close(gate[0]);
            end_child(work(i));
        }
        children.push_back(child);
    }
    close(gate[0]);
    close(gate[1]);
    std::vector<int> results;
    for (const pid_t child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        results.push_back(WIFEXITED(status) ? WEXITSTATUS(status) : 255);
    }
    return results;
}

// The same with a single process, for work that would spoil this one.
inline int run_apart(const std::function<int()> &work) {
    return run_together(1, [&](int) { return work(); }).front();
}
