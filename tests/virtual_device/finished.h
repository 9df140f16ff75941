/* The program under test, run to its end. */
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

struct Finished {
    int status = 0;
    std::string output;
};

// Both outputs together.
inline Finished virtual_device(const std::string &arguments) {
    Finished run;
    FILE *pipe = popen((VIRTUAL_DEVICE " " + arguments + " 2>&1").c_str(), "r");
    for (int c = 0; pipe && (c = fgetc(pipe)) != EOF;)
        run.output += static_cast<char>(c);
    const int status = pclose(pipe);
    run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return run;
}
