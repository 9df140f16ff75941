/* virtual_device run */
#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "command_line.h"
#include "commands.h"
#include "device_run.h"
#include "expected_text.h"
#include "files.h"
#include "json_record.h"
#include "output_file.h"
#include "private_world.h"
#include "progress.h"
#include "story.h"

namespace world {
namespace {

void write_record(FILE *file, const Scenario &scenario, const Outcome &outcome) {
    if (file == nullptr)
        return;
    using nlohmann::json;
    const json record = json_record(scenario, outcome);
    fmt::print(file, "{}\n", record.dump(2, ' ', false, json::error_handler_t::replace));
}

std::string expected_path(const CommonOptions &common) {
    const bool shipped = common.scenario.find('/') == std::string::npos &&
                         std::filesystem::path(common.scenario).extension() != ".json";
    const std::filesystem::path place =
        shipped ? std::filesystem::path(scenario_folder()) / common.scenario
                : std::filesystem::absolute(common.scenario).replace_extension();
    return place.string() + ".expected";
}

// On a difference shows it.
bool same(const std::string &expected, const std::string &actual) {
    if (expected == actual)
        return true;
    write_file("/run/world/expected", expected);
    write_file("/run/world/actual", actual);
    std::fflush(nullptr);
    (void)!std::system("cd /run/world && diff -u expected actual");
    return false;
}

void enter_world(const std::string &kdump, const std::string &expected) {
    Options options;
    options.keep = folders_of(kdump);
    options.keep.push_back(std::filesystem::path(expected).parent_path().string());
    enter(options);
}

Outcome run_all(const Scenario &scenario, const RunSetup &setup) {
    DeviceRun device(scenario, setup);
    const Progress progress(device.record());
    for (const std::string &line : scenario.run)
        device.run(line);
    return device.outcome();
}

}  // namespace

int run_on_device(const CommonOptions &common, const RunOptions &options) {
    Scenario scenario = chosen_scenario(common);
    if (!options.command.empty())
        scenario.run = {shell_line(options.command)};
    if (scenario.run.empty())
        throw std::runtime_error("name a command, or a scenario that has one");
    const bool compares = options.command.empty() && !common.real_time;
    const bool tells = !options.check && !options.bless;
    const std::string expected_file = compares ? expected_path(common) : "";
    const std::string expected = compares ? read_file_if_any(expected_file) : "";
    const OutputFile record = open_output(options.json);

    RunSetup setup;
    setup.kdump = kdump_command(common);
    setup.output_passes = !options.command.empty();
    enter_world(setup.kdump, expected_file);
    Story story(stdout);
    if (tells) {
        setup.console_arrived = [&](std::string_view piece) { story.console(piece); };
        story.open(scenario.run.front(), scenario.about);
    }
    const Outcome outcome = run_all(scenario, setup);
    write_record(record.get(), scenario, outcome);
    const std::string actual = expected_text(outcome);
    if (options.bless) {
        write_file(expected_file, actual);
        return 0;
    }
    if (tells)
        story.close(outcome, scenario.note);
    if (!compares) {
        const int status = outcome.commands.back().exit_status;
        story.verdict(status == 0, "The command ended with status " + std::to_string(status) + ".");
        return status;
    }
    const bool good = same(expected, actual);
    if (tells)
        story.verdict(good, good ? "All as it should be: console, requests, upload and files."
                                 : "Not as expected of this scenario: see the differences above.");
    return good ? 0 : 1;
}

}  // namespace world
