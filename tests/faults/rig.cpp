#include "tests/faults/rig.h"

#include "testing/files.h"
#include "testing/private_world.h"

namespace reliability {
namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::seconds kPatienceWithSlowRuns{60};

// A memory checker takes its time, and so does it to note where allocations are made.
bool is_slow(const Disturbance &disturbance) {
    return disturbance.trouble == Trouble::allocation && disturbance.at == 0;
}

Files make_device() {
    world::name_cloud_hosts();
    world::authority().write_client_files(world::kDeviceDir);
    world::authority().install();
    return look();
}

world::FakeCloudSetup cloud_in_memory() {
    world::FakeCloudSetup setup;
    setup.cloud.keeps_files = false;
    setup.records_whole_bodies = true;
    return setup;
}

}  // namespace

Rig::Rig(std::vector<std::string> command)
    : command_(std::move(command)), present_(make_device()), fake_(cloud_in_memory()) {}

Observation Rig::run(const Kind &kind, const Disturbance &disturbance, const Files &files) {
    Observation observed;
    observed.kind = &kind;
    observed.disturbance = disturbance;
    restore(present_, files);
    observed.before = files;
    std::vector<std::string> words = command_;
    words.insert(words.end(), kind.words.begin(), kind.words.end());
    const bool slow = is_watched() || is_slow(disturbance);
    fake_.set_patience(slow ? kPatienceWithSlowRuns : kPatience);
    observed.run = run_disturbed(words, disturbance, slow);
    fake_.wait_until_idle();
    fake_.cloud.forget();
    for (world::Exchange &exchange : fake_.record.take())
        if (exchange.method == "PUT" && exchange.status != 0)
            observed.uploads.push_back({std::move(exchange.body), exchange.status});
    observed.console = console_.text();
    console_.clear();
    present_ = observed.after = look();
    return observed;
}

}  // namespace reliability
