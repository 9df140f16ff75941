/* virtual_device run */
#include <fmt/format.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <thread>

#include "testing/files.h"
#include "testing/shown_folders.h"
#include "testing/spawn.h"
#include "virtual_device/commands.h"
#include "virtual_device/device_run.h"
#include "virtual_device/expected_text.h"
#include "virtual_device/story.h"

namespace fs = std::filesystem;

namespace world {
namespace {

using nlohmann::json;

json of_tree(const FileTree &tree) {
    json files = json::object();
    for (const auto &[path, file] : tree)
        files[path] = {{"size", file.size}, {"sha256", file.sha256}};
    return files;
}

json of_exchange(const Exchange &exchange) {
    json headers = json::array();
    for (const auto &[name, value] : exchange.headers)
        headers.push_back({{"name", name}, {"value", value}});
    return {{"service", exchange.service},
            {"method", exchange.method},
            {"url", exchange.url},
            {"headers", headers},
            {"client_certificate", exchange.client_certificate},
            {"body_size", exchange.body_size},
            {"body_sha256", exchange.body_sha256},
            {"status", exchange.status},
            {"mishap", exchange.mishap},
            {"reply_size", exchange.reply_size},
            {"started", exchange.started},
            {"ended", exchange.ended}};
}

json json_record(const Scenario &scenario, const Outcome &outcome) {
    json record = {{"scenario", scenario.name},
                   {"proxied", outcome.proxied},
                   {"dns_queries", outcome.dns_queries},
                   {"sleeps", outcome.sleeps},
                   {"reboots", outcome.reboots},
                   {"local_service", outcome.local_state},
                   {"files_before", of_tree(outcome.before)},
                   {"files_after", of_tree(outcome.after)}};
    for (const CommandResult &command : outcome.commands)
        record["commands"].push_back({{"line", command.line},
                                      {"exit_status", command.exit_status},
                                      {"console", command.console},
                                      {"output", command.output},
                                      {"errors", command.errors},
                                      {"peak_kb", command.peak_kb}});
    for (const Exchange &exchange : outcome.exchanges)
        record["requests"].push_back(of_exchange(exchange));
    for (const StoredObject &object : outcome.stored)
        record["stored"].push_back(
            {{"name", object.name}, {"size", object.size}, {"sha256", object.sha256}});
    return record;
}

void write_record(FILE *file, const Scenario &scenario, const Outcome &outcome) {
    if (file == nullptr)
        return;
    const json record = json_record(scenario, outcome);
    fmt::print(file, "{}\n", record.dump(2, ' ', false, json::error_handler_t::replace));
}

std::string expected_path(const CommonOptions &common) {
    const bool shipped = common.scenario.find('/') == std::string::npos &&
                         fs::path(common.scenario).extension() != ".json";
    const fs::path place = shipped ? fs::path(scenario_folder()) / common.scenario
                                   : fs::absolute(common.scenario).replace_extension();
    const std::string own = place.string() + ".machine.expected";
    return !common.machine.empty() && exists(own) ? own : place.string() + ".expected";
}

// Shows the difference, if any.
bool same(const std::string &expected, const std::string &actual) {
    if (expected == actual)
        return true;
    write_file("/run/world/expected", expected);
    write_file("/run/world/actual", actual);
    world::run(Command({"diff", "-u", "expected", "actual"}).in_folder("/run/world"));
    return false;
}

// A progress line on the terminal during a large upload.
class Progress {
  public:
    explicit Progress(const ExchangeRecord &record) : record_(record) {
        if (isatty(STDERR_FILENO))
            watcher_ = std::thread(&Progress::watch, this);
    }
    ~Progress() {
        done_ = true;
        if (watcher_.joinable())
            watcher_.join();
    }
    Progress(const Progress &) = delete;
    Progress &operator=(const Progress &) = delete;

  private:
    void watch() const {
        bool shown = false;
        while (!done_) {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            const std::vector<Exchange> exchanges = record_.all();
            const bool busy =
                !exchanges.empty() && exchanges.back().body_size > 0 && exchanges.back().ended <= 0;
            if (busy)
                fmt::print(stderr, "\r  the cloud has {} MiB ", exchanges.back().body_size >> 20);
            else if (shown)
                fmt::print(stderr, "\r{:30}\r", "");
            shown = busy;
        }
    }

    const ExchangeRecord &record_;
    std::atomic<bool> done_{false};
    std::thread watcher_;
};

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
    if (options.command.empty() && scenario.run.empty())
        throw std::runtime_error("name a command, or a scenario that has one");
    const bool compares = options.command.empty() && !common.real_time;
    const bool tells = !options.check && !options.bless;
    const std::string expected_file = compares ? expected_path(common) : "";
    const std::string expected = compares ? read_file_if_any(expected_file) : "";
    const OutputFile record = open_output(options.json);

    std::vector<std::string> command = options.command;
    if (!command.empty() && command.front().find('/') != std::string::npos)
        command.front() = fs::absolute(command.front()).lexically_normal().string();
    RunSetup setup =
        enter_for_runs(common, scenario, fs::path(expected_file).parent_path().string());
    setup.output_passes = !command.empty();
    if (!command.empty())
        scenario.run = {shell_line(command)};
    Story story(stdout);
    if (tells) {
        setup.console_arrived = [&](std::string_view piece) { story.console(piece); };
        story.open(scenario.run.front(), scenario.about);
    }
    const Outcome outcome = run_all(scenario, setup);
    write_record(record.get(), scenario, outcome);
    const std::string actual = expected_text(outcome);
    if (options.bless) {
        write_file(inside(expected_file), actual);
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
