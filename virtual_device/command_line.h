/* Small helpers for the subcommands: which scenario, which program, how a command line is written.
 */
#pragma once

#include <string>
#include <vector>

#include "commands.h"
#include "device_run.h"
#include "scenario.h"

namespace world {

// The scenario asked for, or a plain device.
Scenario chosen_scenario(const CommonOptions &common);

// The kdump command line, a single path made absolute.
std::string kdump_command(const CommonOptions &common);

// Folders of the programs that a command line names, which must stay reachable in the world.
std::vector<std::string> folders_of(const std::string &command_line);

// Words as one shell line, quoted where needed.
std::string shell_line(const std::vector<std::string> &words);

}  // namespace world
