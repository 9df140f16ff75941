// Helpers of the subcommands: scenario, kdump, command lines.
#pragma once

#include <string>
#include <vector>

#include "virtual_device/commands.h"
#include "virtual_device/device_run.h"
#include "virtual_device/scenario.h"

namespace world {

// The scenario asked for, or a plain device.
Scenario chosen_scenario(const CommonOptions &common);

// Enters a private world that shows the caller's folder, those of the programs that `kdump` names,
// and the given ones. Returns `kdump`, the path of a file or a command line, as a shell line there.
std::string enter_world(const std::string &kdump, std::vector<std::string> folders = {});

// Enters a world for runs of that kdump, on that machine if any, which shows `folder` too. Throws when
// the machine is incomplete.
RunSetup enter_for_runs(const CommonOptions &common, const Scenario &scenario,
                        const std::string &folder = "");

// Words as one shell line, quoted where needed.
std::string shell_line(const std::vector<std::string> &words);

}  // namespace world
