/* The command line of virtual_device: run, shell, machine, serve, cloud, fleet, scenarios. */
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <exception>
#include <filesystem>

#include "virtual_device/commands.h"

namespace {

void add_common(CLI::App *command, world::CommonOptions &options) {
    command->add_option("--kdump", options.kdump,
                        "the kdump program, or a command line that ends in it");
    command->add_option("--scenario", options.scenario,
                        "a shipped scenario's name, or a JSON file");
    command->add_option("--machine", options.machine,
                        "run it on a booted machine: x86_64, or the folder of another");
    command->add_option("--memory", options.memory_mb, "megabytes of the machine")
        ->check(CLI::Range(16, 4096));
    command->add_flag("--real-time", options.real_time, "sleep for real instead of recording");
}

CLI::App *add_fleet(CLI::App &app, world::FleetCommandOptions &options) {
    CLI::App *command = app.add_subcommand(
        "fleet", "many devices at once, in real time, after an outage of the cloud");
    world::FleetOptions &fleet = options.fleet;
    fleet.kdump = KDUMP_PROGRAM;
    command->add_option("--kdump", fleet.kdump,
                        "the kdump program, or a command line that ends in it");
    command->add_option("--devices", fleet.devices, "how many")->check(CLI::Range(1, 1000));
    command->add_option("--spread", fleet.spread, "seconds over which they start")
        ->check(CLI::Range(0, 3600));
    command->add_option("--outage", fleet.outage, "seconds without the cloud")
        ->check(CLI::Range(0, 3600));
    command->add_option("--bytes", fleet.bytes, "size of each dump")->check(CLI::Range(0, 1 << 24));
    command->add_option("--json", options.json, "write the record to this file");
    command->add_option("--plot", options.plot, "write a plot to this file, for gnuplot");
    return command;
}

CLI::App *add_cloud(CLI::App &app, world::CloudCommandOptions &options) {
    CLI::App *command =
        app.add_subcommand("cloud", "only the cloud, for a device or a client of your own");
    command->add_option("--port", options.port, "where it listens on 127.0.0.1, over TLS")
        ->check(CLI::Range(1, 65535));
    command->add_option("--scenario", options.scenario,
                        "answers as in this shipped scenario, or JSON file");
    command->add_option("--keep", options.keep, "keep uploads in this folder, new or empty");
    return command;
}

}  // namespace

int main(int argc, char **argv) {
    CLI::App app("A whole device and its cloud in private namespaces: nothing outside is touched.");
    app.require_subcommand(1);
    world::CommonOptions common;
    world::RunOptions run;

    CLI::App *run_command =
        app.add_subcommand("run", "run a command on the device and tell the story");
    add_common(run_command, common);
    run_command->add_option("--json", run.json, "write the whole record to this file");
    run_command->add_flag("--check", run.check,
                          "compare with the scenario's expected text, quietly");
    run_command->add_flag("--bless", run.bless, "write the scenario's expected text anew");
    run_command->add_option("COMMAND", run.command, "a program of the device and its arguments");

    CLI::App *shell_command = app.add_subcommand("shell", "open a shell on the device");
    add_common(shell_command, common);
    CLI::App *machine_command =
        app.add_subcommand("machine", "boot a machine and open a shell on its serial console");
    add_common(machine_command, common);
    CLI::App *serve_command = app.add_subcommand(
        "serve", "keep the device up until Ctrl-C, showing console and requests");
    add_common(serve_command, common);
    CLI::App *list_command = app.add_subcommand("scenarios", "list what is shipped, one line each");
    world::FleetCommandOptions fleet;
    const CLI::App *fleet_command = add_fleet(app, fleet);
    world::CloudCommandOptions cloud;
    const CLI::App *cloud_command = add_cloud(app, cloud);
    CLI11_PARSE(app, argc, argv);

    try {
        if (list_command->parsed())
            return world::list_scenarios();
        if (fleet_command->parsed())
            return world::run_fleet_command(fleet);
        if (cloud_command->parsed())
            return world::run_cloud_command(cloud);
        if (run_command->parsed())
            return world::run_on_device(common, run);
        if (machine_command->parsed() && common.machine.empty()) {
            common.machine = "x86_64";
        }
        if (shell_command->parsed() || machine_command->parsed())
            return world::open_shell(common);
        return world::serve_device(common);
    } catch (const std::exception &error) {
        fmt::print(stderr, "virtual_device: {}\n", error.what());
        return 1;
    }
}
