/* One private world with a device and its cloud, in which run follows run. */
#pragma once

#include <string>

#include "testing/console.h"
#include "testing/fake_cloud.h"
#include "tests/faults/device.h"
#include "tests/faults/invariants.h"

namespace reliability {

class Rig {
  public:
    // Call it inside the private world. `command`: the program, perhaps after a memory checker.
    explicit Rig(std::vector<std::string> command);

    // Runs the program on a device with these files; the device then has those of the result.
    Observation run(const Kind &kind, const Disturbance &disturbance, const Files &files);

  private:
    bool is_watched() const { return command_.size() > 1; }

    const std::vector<std::string> command_;
    Files present_;
    world::Console console_;
    world::FakeCloud fake_;
};

}  // namespace reliability
