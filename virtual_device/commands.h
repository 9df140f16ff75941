/* The subcommands of virtual_device; each returns the program's exit status. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "testing/shown_folders.h"
#include "virtual_device/fleet.h"

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

}  // namespace world
