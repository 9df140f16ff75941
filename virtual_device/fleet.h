/*
 * Many devices at once: a run of kdump each, with a file tree of its own, all of them sharing one
 * loopback, local service and cloud. The cloud is out at first; the record shows how the devices'
 * requests spread over time then and afterwards.
 */
#pragma once

#include <string>
#include <vector>

#include "cloud.h"
#include "exchange_record.h"

namespace world {

struct FleetOptions {
    int devices = 200;
    int spread = 10;    // seconds over which the devices start, evenly
    int outage = 25;    // seconds from the start during which the cloud cuts every connection
    int bytes = 20000;  // of each device's dump
    std::string kdump;
};

struct FleetOutcome {
    std::vector<Exchange> exchanges;  // with the cloud
    std::vector<StoredObject> stored;
    int dumps_left = 0;  // devices whose dump is still there
    double seconds = 0;
};

// Runs the fleet in real time. Call it inside the private world.
FleetOutcome run_fleet(const FleetOptions &options, const std::vector<std::string> &keep);

}  // namespace world
