// What no scenario can compare: a reboot of the machine adds init's lines to the console.
#include <gmock/gmock.h>

#include "testing/shown_folders.h"
#include "virtual_device/device_run.h"

namespace {

// Without a command to run at shutdown, init sends SIGTERM at once.
TEST(Reboot, LastLinesOfDebugRamLogArrive) {
    world::Scenario scenario;
    scenario.files["/tmp/upgrade_finish"] = "";
    world::RunSetup setup;
    setup.kdump = world::inside(KDUMP_PROGRAM);
    setup.machine = world::inside(MACHINE);
    setup.memory_mb = 96;
    world::DeviceRun device(scenario, setup);
    device.run("sed -i /shutdown/d /etc/inittab; kill -HUP 1; sleep 2");
    device.run("kdump debugRamLog");
    const world::Outcome outcome = device.outcome();
    EXPECT_EQ(outcome.reboots, 1);
    EXPECT_THAT(outcome.commands.back().console,
                testing::AllOf(testing::HasSubstr("Sent SIGTERM to all processes"),
                               testing::HasSubstr("main 1221 unlink /tmp/kdump_process_debug_info"),
                               testing::HasSubstr("main 1223")));
}

}  // namespace
