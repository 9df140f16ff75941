/* virtual_device fleet */
#include <fmt/format.h>

#include "virtual_device/command_line.h"
#include "virtual_device/commands.h"
#include "virtual_device/fleet_report.h"
#include "virtual_device/output_file.h"

namespace world {

int run_fleet_command(FleetCommandOptions options) {
    const OutputFile json = open_output(options.json);
    const OutputFile plot = open_output(options.plot);
    options.fleet.kdump = enter_world(options.fleet.kdump);
    const FleetOutcome outcome = run_fleet(options.fleet);
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
