#include "virtual_device/fleet.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "testing/certificates.h"
#include "testing/fake_cloud.h"
#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/spawn.h"
#include "testing/world_mounts.h"

namespace world {
namespace {

constexpr const char *kDump = "/mnt/data/iss_config/segmentrace.txt";

std::string name_of(int device) {
    const std::string number = std::to_string(device + 1);
    return "device-" + std::string(number.size() < 4 ? 4 - number.size() : 0, '0') + number;
}

// Runs kdump and waits; the result is 1 when the dump is still there.
int deliver(const std::string &kdump) {
    run(Command({"/bin/sh", "-c", "exec " + kdump + " segmentrace"}).quiet());
    return exists(kDump) ? 1 : 0;
}

// A device's life, in a process of its own.
int be_device(int number, const FleetOptions &options,
              std::chrono::steady_clock::time_point start) {
    const Identity client = authority().issue_client(name_of(number));
    if (unshare(CLONE_NEWNS) != 0)
        throw std::runtime_error("unshare");
    renew_tree();
    if (chdir(kDeviceDir) != 0)
        throw std::runtime_error(kDeviceDir);
    write_file("CRT", client.certificate_pem());
    write_file("KEY", client.key_pem());
    write_file(kDump, std::string(static_cast<size_t>(options.bytes), 'd'));
    const auto offset =
        std::chrono::milliseconds(1000LL * options.spread * number / std::max(options.devices, 1));
    std::this_thread::sleep_until(start + offset);
    return deliver(options.kdump);
}

// The devices are made before any thread exists, and wait for their start.
std::vector<Child> make_devices(const FleetOptions &options,
                                std::chrono::steady_clock::time_point start) {
    std::vector<Child> devices;
    for (int number = 0; number < options.devices; ++number)
        devices.push_back(
            spawn(Command([&, number] { return be_device(number, options, start); })));
    return devices;
}

}  // namespace

FleetOutcome run_fleet(const FleetOptions &options) {
    name_cloud_hosts();
    authority();  // before the devices are made: they share it
    const auto preparation = std::chrono::milliseconds(1000 + 20 * options.devices);
    const auto start = std::chrono::steady_clock::now() + preparation;
    std::vector<Child> devices = make_devices(options, start);

    std::this_thread::sleep_until(start);
    FakeCloudSetup setup;
    setup.cloud.outage = std::chrono::seconds(options.outage);
    FakeCloud fake(setup);

    FleetOutcome outcome;
    for (Child &device : devices) {
        const int status = device.wait().status;
        if (status > 1)
            throw std::runtime_error("a device could not be made");
        outcome.dumps_left += status;
    }
    for (const Exchange &exchange : fake.record.all())
        if (exchange.service != "local")
            outcome.exchanges.push_back(exchange);
    outcome.stored = fake.cloud.stored();
    outcome.seconds = fake.record.now();
    return outcome;
}

}  // namespace world
