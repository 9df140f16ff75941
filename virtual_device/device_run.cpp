#include "virtual_device/device_run.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <tuple>

#include "testing/certificates.h"
#include "testing/daemon.h"
#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"
#include "testing/swift.h"
#include "virtual_device/commands.h"

namespace world {
namespace {

const std::string kOutputFile = "/run/world/output";
const std::string kErrorsFile = "/run/world/errors";

std::string object_name(const std::string &url) {
    return std::filesystem::path(url.substr(0, url.find('?'))).filename().string();
}

}  // namespace

DeviceRun::DeviceRun(const Scenario &scenario, RunSetup setup)
    : scenario_(scenario), setup_(std::move(setup)), console_(setup_.console_arrived) {
    place_programs();
    start_servers();
    write_files();
    outcome_.before = look_at_files();
    if (!setup_.machine.empty()) {
        boot_machine();
    }
}

void DeviceRun::place_programs() {
    const auto place = [](const char *name, const std::string &command) {
        const std::string path = std::string(kStandInDir) + "/" + name;
        write_file(path, "#!/bin/sh\nexec " + command + " \"$@\"\n");
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    };
    place("kdump", setup_.kdump);
    if (const std::string agent = inside(AGENT_PROGRAM); exists(agent))
        place("agent", agent);
    place("cloudagent-run", "${RUN_SHELL:-busybox sh} " + inside(RUN_SCRIPT));
    if (scenario_.stop_after_sleeps > 0)
        write_file(kSleepLimit, std::to_string(scenario_.stop_after_sleeps));
}

void DeviceRun::write_files() {
    for (const auto &[path, content] : seeded_files())
        write_file(path, content);
    for (const auto &[path, content] : scenario_.files) {
        std::filesystem::remove_all(path);
        if (content)
            write_file(path, *content);
    }
    if (scenario_.identity)
        authority().write_client_files(kDeviceDir);
    authority().install();
}

void DeviceRun::start_servers() {
    FakeCloudSetup setup;
    setup.local_script = scenario_.local;
    setup.cloud_script = scenario_.cloud;
    setup.local = scenario_.local_settings;
    setup.cloud = scenario_.cloud_settings;
    setup.refuse = scenario_.refuse;
    setup.addresses = scenario_.addresses;
    for (const auto &[name, address] : scenario_.dns)
        setup.cloud.tfa_hosts.push_back(name);
    if (scenario_.daemons.count("nginx"))
        setup.store_address = kNginxAddress;
    if (scenario_.daemons.count("swift")) {
        setup.store_address = kSwiftAddress;
        setup.cloud.signer = [list = scenario_.signatures](size_t number, const std::string &name) {
            return presigned_target(list[std::min(number, list.size()) - 1], number, name);
        };
    }
    name_cloud_hosts(setup);
    fake_ = std::make_unique<FakeCloud>(setup);
    if (scenario_.daemons.count("tinyproxy"))
        daemons_.push_back(start_tinyproxy(scenario_.proxy_address));
    for (const char *squid : {"squid", "squid-with-password"})
        if (scenario_.daemons.count(squid))
            daemons_.push_back(start_squid(squid == std::string("squid-with-password")));
    if (!scenario_.proxy_replies.empty())
        proxy_ = std::make_unique<FakeProxy>(fake_->record, scenario_.proxy_replies);
    if (scenario_.daemons.count("nginx"))
        daemons_.push_back(start_nginx(fake_->identity, authority()));
    if (scenario_.daemons.count("swift"))
        daemons_.push_back(start_swift(fake_->identity));
    if (!scenario_.dns.empty())
        daemons_.push_back(start_dnsmasq(scenario_.dns));
}

Command DeviceRun::on_device(const std::vector<std::string> &words) const {
    Command command(words);
    command.set(scenario_.environment);
    if (!scenario_.real_sleep)
        command.set("LD_PRELOAD", SLEEP_STAND_IN).set("ASAN_OPTIONS", "verify_asan_link_order=0");
    return command;
}

void DeviceRun::boot_machine() {
    machine_ = std::make_unique<Machine>(MachineSetup{setup_.machine, setup_.kdump, SLEEP_STAND_IN,
                                                      inside(RUN_SCRIPT), setup_.memory_mb,
                                                      setup_.console_arrived});
}

void DeviceRun::run_on_machine(const std::string &line) {
    std::string settings;
    for (const auto &[name, value] : scenario_.environment) {
        settings += shell_line({"export", name + "=" + value}) + ";";
    }
    if (!scenario_.real_sleep) {
        settings += "export LD_PRELOAD=/usr/lib/machine/sleep_stand_in.so;";
    }
    const int reboots = machine_->reboots();
    const Machine::Ended end = machine_->run(settings + line);
    CommandResult result;
    result.line = line;
    result.exit_status = end.status;
    result.console = end.console;
    outcome_.commands.push_back(std::move(result));
    if (machine_->reboots() > reboots) {
        before_boot_ = outcome_.commands.size();
    }
}

void DeviceRun::collect_from_machine() {
    machine_->bring_files_back();
    for (size_t at = before_boot_; at < outcome_.commands.size(); ++at) {
        const std::string end = "." + std::to_string(at - before_boot_ + 1);
        outcome_.commands[at].output = read_file_if_any(kOutputFile + end);
        outcome_.commands[at].errors = read_file_if_any(kErrorsFile + end);
    }
}

void DeviceRun::run(const std::string &line) {
    if (machine_) {
        return run_on_machine(line);
    }
    Command command = on_device({"/bin/sh", "-c", line}).redirect(STDERR_FILENO, kErrorsFile);
    if (!setup_.output_passes)
        command.redirect(STDOUT_FILENO, kOutputFile);
    const Finished end = world::run(command);
    CommandResult result;
    result.line = line;
    result.console = console_.text();
    console_.clear();
    result.exit_status = end.status;
    result.output = setup_.output_passes ? "" : read_file_if_any(kOutputFile);
    result.errors = read_file_if_any(kErrorsFile);
    result.peak_kb = end.peak_kb;
    outcome_.commands.push_back(std::move(result));
}

int DeviceRun::shell() {
    if (machine_) {
        return machine_->shell();
    }
    for (const int number : {SIGINT, SIGQUIT})
        signal(number, SIG_IGN);
    return world::run(on_device({"bash", "--norc", "--noprofile", "-i"})
                          .set("PS1", "virtual-device:\\w# "))
        .status;
}

Outcome DeviceRun::outcome() {
    daemons_.clear();  // their logs are complete then
    if (machine_) {
        collect_from_machine();
    }
    outcome_.exchanges = fake_->record.all();
    const auto store = [this](const std::string &name, const Exchange &exchange) {
        outcome_.stored.push_back(
            {name, exchange.body_size, exchange.body_sha256, exchange.body_path});
    };
    if (scenario_.daemons.count("nginx"))
        for (Exchange &exchange : logged_exchanges("nginx", kNginxLog)) {
            if (exchange.method == "PUT" && exchange.status == 200)
                store(object_name(exchange.url), exchange);
            outcome_.exchanges.push_back(std::move(exchange));
        }
    if (scenario_.daemons.count("swift"))
        for (Exchange &exchange : logged_exchanges("swift", kSwiftLog)) {
            if (exchange.method == "listed")
                store(exchange.url, exchange);
            else
                outcome_.exchanges.push_back(std::move(exchange));
        }
    if (scenario_.unordered)
        std::sort(outcome_.exchanges.begin(), outcome_.exchanges.end(),
                  [](const Exchange &a, const Exchange &b) {
                      return std::tie(a.service, a.url) < std::tie(b.service, b.url);
                  });
    for (StoredObject &object : fake_->cloud.stored())
        outcome_.stored.push_back(std::move(object));
    if (scenario_.daemons.count("tinyproxy"))
        outcome_.proxied = proxied_targets();
    if (scenario_.daemons.count("squid") || scenario_.daemons.count("squid-with-password"))
        outcome_.proxied = squid_requests();
    if (!scenario_.dns.empty())
        outcome_.dns_queries = dns_queries();
    std::istringstream sleeps(read_file_if_any(kSleepRecord));
    for (unsigned seconds = 0; sleeps >> seconds;)
        outcome_.sleeps.push_back(seconds);
    outcome_.reboots = machine_ ? machine_->reboots() : reboot_count();
    outcome_.after = look_at_files();
    outcome_.local_state = fake_->local.state();
    return outcome_;
}

}  // namespace world
