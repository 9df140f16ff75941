/* What virtual_device's subcommands do; each returns the program's exit status. */
#pragma once

#include <string>
#include <vector>

#include "fleet.h"

namespace world {

struct CommonOptions {
    std::string kdump = KDUMP_PROGRAM;
    std::string scenario;
    bool real_time = false;
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

struct FleetCommandOptions {
    FleetOptions fleet;
    std::string json;
    std::string plot;
};

int run_fleet_command(const FleetCommandOptions &options);

}  // namespace world
