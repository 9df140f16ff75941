#include "fleet.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>

#include "certificates.h"
#include "config/deployment.h"
#include "files.h"
#include "local_service.h"
#include "private_world.h"
#include "world_mounts.h"

namespace world {
namespace {

constexpr const char *kDump = "/mnt/data/iss_config/segmentrace.txt";

std::string name_of(int device) {
    const std::string number = std::to_string(device + 1);
    return "device-" + std::string(number.size() < 4 ? 4 - number.size() : 0, '0') + number;
}

// Runs kdump and waits; the result is 1 when the dump is still there.
int deliver(const std::string &kdump) {
    const pid_t process = fork();
    if (process == 0) {
        const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        execl("/bin/sh", "sh", "-c", ("exec " + kdump + " segmentrace").c_str(), nullptr);
        _exit(127);
    }
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
    return exists(kDump) ? 1 : 0;
}

// One device, in a process of its own from here on.
[[noreturn]] void be_device(int number, const FleetOptions &options,
                            const std::vector<std::string> &keep,
                            std::chrono::steady_clock::time_point start) {
    int result = 2;
    try {
        const Identity client = authority().issue_client(name_of(number));
        if (unshare(CLONE_NEWNS) != 0)
            throw std::runtime_error("unshare");
        renew_tree(keep);
        if (chdir(kDeviceDir) != 0)
            throw std::runtime_error(kDeviceDir);
        write_file("CRT", client.certificate_pem());
        write_file("KEY", client.key_pem());
        write_file(kDump, std::string(static_cast<size_t>(options.bytes), 'd'));
        const auto offset = std::chrono::milliseconds(1000LL * options.spread * number /
                                                      std::max(options.devices, 1));
        std::this_thread::sleep_until(start + offset);
        result = deliver(options.kdump);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s: %s\n", name_of(number).c_str(), error.what());
    }
    _exit(result);
}

// The devices are made before any thread exists, and wait for their start.
std::vector<pid_t> make_devices(const FleetOptions &options, const std::vector<std::string> &keep,
                                std::chrono::steady_clock::time_point start) {
    std::vector<pid_t> devices;
    for (int number = 0; number < options.devices; ++number) {
        const pid_t device = fork();
        if (device == 0)
            be_device(number, options, keep, start);
        devices.push_back(device);
    }
    return devices;
}

}  // namespace

FleetOutcome run_fleet(const FleetOptions &options, const std::vector<std::string> &keep) {
    for (const char *host : {CLOUD_TFA_HOST, kStoreHost})
        add_host(host);
    authority();  // before the devices are made: they share it
    const auto preparation = std::chrono::milliseconds(1000 + 20 * options.devices);
    const auto start = std::chrono::steady_clock::now() + preparation;
    const std::vector<pid_t> devices = make_devices(options, keep, start);

    std::this_thread::sleep_until(start);
    ExchangeRecord local_record;
    ExchangeRecord record;
    LocalService local(local_record, {}, {});
    CloudSettings settings;
    settings.tfa_hosts = {CLOUD_TFA_HOST};
    settings.outage = std::chrono::seconds(options.outage);
    Cloud cloud(record, {}, settings);
    const HttpServer local_server("127.0.0.1", 8000, local);
    const HttpServer cloud_server(
        "127.0.0.1", 443, cloud,
        server_context(authority().issue_server(cloud.hosts()), authority(), false));

    FleetOutcome outcome;
    for (const pid_t device : devices) {
        int status = 0;
        while (waitpid(device, &status, 0) < 0 && errno == EINTR) {
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
            throw std::runtime_error("a device could not be made");
        outcome.dumps_left += WEXITSTATUS(status);
    }
    outcome.exchanges = record.all();
    outcome.stored = cloud.stored();
    outcome.seconds = record.now();
    return outcome;
}

}  // namespace world
