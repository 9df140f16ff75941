/* virtual_device fleet */
#include <fmt/format.h>

#include "command_line.h"
#include "commands.h"
#include "fleet_report.h"
#include "output_file.h"
#include "private_world.h"

namespace world {

int run_fleet_command(const FleetCommandOptions &options) {
    const OutputFile json = open_output(options.json);
    const OutputFile plot = open_output(options.plot);
    Options world_options;
    world_options.keep = folders_of(options.fleet.kdump);
    const std::vector<std::string> keep = folders_to_keep(world_options);
    enter(world_options);
    const FleetOutcome outcome = run_fleet(options.fleet, keep);
    fmt::print("{}", fleet_table(options.fleet, outcome));
    if (json)
        fmt::print(json.get(), "{}\n", fleet_record(options.fleet, outcome).dump(2));
    if (plot)
        fmt::print(plot.get(), "{}", fleet_plot(options.fleet, outcome));
    const bool all = outcome.stored.size() + static_cast<size_t>(outcome.dumps_left) ==
                     static_cast<size_t>(options.fleet.devices);
    return all ? 0 : 1;
}

}  // namespace world
