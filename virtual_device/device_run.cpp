#include "device_run.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "certificates.h"
#include "config/deployment.h"
#include "files.h"
#include "private_world.h"

namespace world {
namespace {

// Nothing listens there, so a connection is refused at once.
constexpr const char *kNowhere = "127.0.0.9";
constexpr const char *kOutputFile = "/run/world/output";
constexpr const char *kErrorsFile = "/run/world/errors";

void redirect(int descriptor, const std::string &path) {
    if (path.empty())
        return;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(file, descriptor);
    close(file);
}

std::string object_name(const std::string &url) {
    return std::filesystem::path(url.substr(0, url.find('?'))).filename().string();
}

}  // namespace

DeviceRun::DeviceRun(const Scenario &scenario, RunSetup setup)
    : scenario_(scenario), setup_(std::move(setup)), console_(setup_.console_arrived) {
    place_programs();
    name_hosts();
    write_files();
    start_servers();
    outcome_.before = look_at_files();
}

void DeviceRun::place_programs() {
    const auto place = [](const char *name, const std::string &command) {
        const std::string path = std::string(kStandInDir) + "/" + name;
        write_file(path, "#!/bin/sh\nexec " + command + " \"$@\"\n");
        std::filesystem::permissions(path, std::filesystem::perms(0755));
    };
    place("kdump", setup_.kdump);
    if (exists(AGENT_PROGRAM))
        place("agent", AGENT_PROGRAM);
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

void DeviceRun::name_hosts() {
    const auto place = [&](const char *part, const char *address) {
        return scenario_.refuse.count(part) ? kNowhere : address;
    };
    add_host(CLOUD_TFA_HOST, place("tfa", "127.0.0.1"));
    add_host(kTimeHost, place("time", "127.0.0.1"));
    add_host(kStoreHost,
             place("store", scenario_.peers.count("nginx") ? kNginxAddress : "127.0.0.1"));
    // The resolver's own server never answers; a pinned one can.
    write_file("/etc/resolv.conf",
               std::string("nameserver ") + kNowhere + "\noptions timeout:1 attempts:1\n");
}

void DeviceRun::start_servers() {
    CloudSettings settings = scenario_.cloud_settings;
    settings.tfa_hosts = {CLOUD_TFA_HOST};
    for (const auto &[name, address] : scenario_.dns)
        settings.tfa_hosts.push_back(name);
    local_ = std::make_unique<LocalService>(record_, scenario_.local, scenario_.local_settings);
    cloud_ = std::make_unique<Cloud>(record_, scenario_.cloud, settings);
    const Identity identity = authority().issue_server(cloud_->hosts());
    if (scenario_.refuse.count("local") == 0)
        local_server_ = std::make_unique<HttpServer>("127.0.0.1", 8000, *local_);
    cloud_server_ = std::make_unique<HttpServer>("127.0.0.1", 443, *cloud_,
                                                 server_context(identity, authority(), false));
    plain_time_server_ = std::make_unique<HttpServer>("127.0.0.1", 80, *cloud_);
    if (scenario_.peers.count("tinyproxy"))
        peers_.push_back(start_tinyproxy());
    if (scenario_.peers.count("nginx"))
        peers_.push_back(start_nginx(identity, authority()));
    if (!scenario_.dns.empty())
        peers_.push_back(start_dnsmasq(scenario_.dns));
}

pid_t DeviceRun::start(const std::vector<std::string> &command, const std::string &output,
                       const std::string &errors) const {
    const pid_t process = fork();
    if (process != 0)
        return process;
    for (const auto &[name, value] : scenario_.environment)
        setenv(name.c_str(), value.c_str(), 1);
    if (!scenario_.real_sleep) {
        setenv("LD_PRELOAD", SLEEP_STAND_IN, 1);
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    }
    redirect(STDOUT_FILENO, output);
    redirect(STDERR_FILENO, errors);
    for (const int number : {SIGINT, SIGQUIT, SIGPIPE})
        signal(number, SIG_DFL);
    std::vector<char *> words;
    for (const std::string &word : command)
        words.push_back(const_cast<char *>(word.c_str()));
    words.push_back(nullptr);
    execvp(words[0], words.data());
    perror(words[0]);
    _exit(127);
}

void DeviceRun::run(const std::string &line) {
    const pid_t process =
        start({"/bin/sh", "-c", line}, setup_.output_passes ? "" : kOutputFile, kErrorsFile);
    int status = 0;
    struct rusage usage = {};
    while (wait4(process, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    CommandResult result;
    result.line = line;
    result.console = console_.text();
    console_.clear();
    result.exit_status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = setup_.output_passes ? "" : read_file_if_any(kOutputFile);
    result.errors = read_file_if_any(kErrorsFile);
    result.peak_kb = usage.ru_maxrss;
    outcome_.commands.push_back(std::move(result));
}

int DeviceRun::shell() {
    for (const int number : {SIGINT, SIGQUIT})
        signal(number, SIG_IGN);
    setenv("PS1", "virtual-device:\\w# ", 1);
    const pid_t process = start({"bash", "--norc", "--noprofile", "-i"}, "", "");
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

Outcome DeviceRun::outcome() {
    peers_.clear();  // their logs are complete then
    outcome_.exchanges = record_.all();
    if (scenario_.peers.count("nginx"))
        for (Exchange &exchange : nginx_exchanges()) {
            if (exchange.method == "PUT" && exchange.status == 200)
                outcome_.stored.push_back({object_name(exchange.url), exchange.body_size,
                                           exchange.body_sha256, exchange.body_path});
            outcome_.exchanges.push_back(std::move(exchange));
        }
    for (StoredObject &object : cloud_->stored())
        outcome_.stored.push_back(std::move(object));
    if (scenario_.peers.count("tinyproxy"))
        outcome_.proxied = proxied_targets();
    if (!scenario_.dns.empty())
        outcome_.dns_queries = dns_queries();
    std::istringstream sleeps(read_file_if_any(kSleepRecord));
    for (unsigned seconds = 0; sleeps >> seconds;)
        outcome_.sleeps.push_back(seconds);
    outcome_.reboots = reboot_count();
    outcome_.after = look_at_files();
    outcome_.local_state = local_->state();
    return outcome_;
}

}  // namespace world
