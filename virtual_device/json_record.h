/* The whole record of a run, for programs. */
#pragma once

#include <nlohmann/json.hpp>

#include "virtual_device/device_run.h"

namespace world {

nlohmann::json json_record(const Scenario &scenario, const Outcome &outcome);

}  // namespace world
