/* The program under test, run to its end. */
#pragma once

#include <unistd.h>

#include <string>

#include "testing/spawn.h"

using world::Finished;

// `arguments` as a shell reads them; both outputs together.
inline Finished virtual_device(const std::string &arguments) {
    const std::string line = "exec \"$0\" " + arguments;
    return world::run_and_read(
        world::Command({"sh", "-c", line, VIRTUAL_DEVICE}).redirect(STDERR_FILENO, STDOUT_FILENO));
}
