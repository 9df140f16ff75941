/* The subcommands of virtual_device; each returns the program's exit status. */
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "testing/shown_folders.h"
#include "virtual_device/device_run.h"
#include "virtual_device/fleet.h"
#include "virtual_device/scenario.h"

namespace world {

struct CommonOptions {
    std::string kdump;  // a path or a command line; empty: the one that the scenario is for
    std::string scenario;
    bool real_time = false;
    std::string machine;  // a name or a folder; empty: the device is no machine
    int memory_mb = 96;
};

struct RunOptions {
    std::vector<std::string> command;
    std::string json;
    bool check = false;
    bool bless = false;
};

int run_on_device(const CommonOptions &common, const RunOptions &options);
int open_shell(const CommonOptions &common);
int serve_device(const CommonOptions &common);
int list_scenarios();

struct CloudCommandOptions {
    std::string scenario;
    std::string keep;  // the folder for uploads; empty: they are only shown
    uint16_t port = 8443;
};

int run_cloud_command(const CloudCommandOptions &options);

struct FleetCommandOptions {
    FleetOptions fleet;
    std::string json;
    std::string plot;
};

int run_fleet_command(FleetCommandOptions options);

// ---- Helpers, in command_line.cpp ----

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

using OutputFile = std::unique_ptr<FILE, int (*)(FILE *)>;

// Opens a file that the caller asked for, before the world hides its path; none for an empty path.
// Throws std::runtime_error when it cannot be written.
OutputFile open_output(const std::string &path);

}  // namespace world
