/* virtual_device shell, serve, scenarios */
#include "virtual_device/commands.h"

#include <fmt/format.h>

#include <csignal>

#include "testing/private_world.h"
#include "virtual_device/device_run.h"
#include "virtual_device/story.h"

namespace world {
int open_shell(const CommonOptions &common) {
    const Scenario scenario = chosen_scenario(common);
    RunSetup setup = enter_for_runs(common, scenario);
    Story story(stdout);
    setup.console_arrived = [&](std::string_view piece) { story.console(piece); };
    DeviceRun device(scenario, setup);
    fmt::print("A shell on the virtual device. Try: kdump segmentrace. Leave with exit.\n");
    std::fflush(stdout);
    const int status = device.shell();
    story.close(device.outcome(), scenario.note);
    return status;
}

int serve_device(const CommonOptions &common) {
    const Scenario scenario = chosen_scenario(common);
    RunSetup setup = enter_for_runs(common, scenario);
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    Story story(stdout);
    setup.console_arrived = [&](std::string_view piece) { story.console(piece); };
    DeviceRun device(scenario, setup);
    fmt::print(
        "The device is up. From another terminal, as the same user:\n"
        "  nsenter --preserve-credentials -U -m -n -p -i -t {} {}/enter kdump RAM\n"
        "Ctrl-C ends it.\n",
        outer_process(), kStandInDir);
    std::fflush(stdout);
    int number = 0;
    sigwait(&ends, &number);
    fmt::print("\n");
    story.close(device.outcome(), scenario.note);
    return 0;
}

int list_scenarios() {
    for (const std::string &name : shipped_scenarios())
        fmt::print("{:<28} {}\n", name, load_scenario(name).about);
    return 0;
}

}  // namespace world
