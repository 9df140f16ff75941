/* Reports of a fleet run: a table by second, a record, a plot. */
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "virtual_device/fleet.h"

namespace world {

struct FleetSecond {
    int cut = 0;      // connections that met the outage
    int asked = 0;    // requests to the TFA service
    int uploads = 0;  // requests to the store
};

// Entry n: what reached the cloud in second n.
std::vector<FleetSecond> by_second(const FleetOutcome &outcome);

std::string fleet_table(const FleetOptions &options, const FleetOutcome &outcome);
nlohmann::json fleet_record(const FleetOptions &options, const FleetOutcome &outcome);
std::string fleet_plot(const FleetOptions &options, const FleetOutcome &outcome);  // for gnuplot

}  // namespace world
