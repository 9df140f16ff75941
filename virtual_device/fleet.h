/*
 * Many devices at once: each runs kdump on its own file tree, all share one loopback, local service
 * and cloud. The cloud is down at first; the record shows how the requests spread over time.
 */
#pragma once

#include <string>
#include <vector>

#include "testing/cloud.h"
#include "testing/exchange_record.h"

namespace world {

struct FleetOptions {
    int devices = 200;
    int spread = 10;    // seconds over which the devices start, evenly
    int outage = 25;    // seconds from the start during which the cloud cuts every connection
    int bytes = 20000;  // of each device's dump
    std::string kdump;  // a shell line
};

struct FleetOutcome {
    std::vector<Exchange> exchanges;  // with the cloud
    std::vector<StoredObject> stored;
    int dumps_left = 0;  // devices whose dump is still there
    double seconds = 0;
};

// Runs the fleet in real time. Call it inside the private world.
FleetOutcome run_fleet(const FleetOptions &options);

}  // namespace world
