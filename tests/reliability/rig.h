/* One private world with a device and its cloud, in which run follows run. */
#pragma once

#include <string>

#include "console.h"
#include "depot.h"
#include "device.h"
#include "invariants.h"

namespace reliability {

class Rig {
  public:
    // Call it inside the private world. `launcher`: words before the program, or none.
    Rig(std::string program, std::vector<std::string> launcher);

    // Runs the program on a device with these files; the device then has those of the result.
    Observation run(const Kind &kind, const Disturbance &disturbance, const Files &files);

  private:
    std::vector<std::string> launcher_;
    std::string program_;
    Files present_;
    world::Console console_;
    Depot depot_;
};

}  // namespace reliability
