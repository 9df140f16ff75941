#include "rig.h"

#include "config/deployment.h"
#include "files.h"
#include "private_world.h"

namespace reliability {
namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::seconds kPatienceWithSlowRuns{60};

// A memory checker takes its time, and so does it to note where allocations are made.
bool is_slow(const Disturbance &disturbance) {
    return disturbance.trouble == Trouble::allocation && disturbance.at == 0;
}

Files make_device() {
    world::add_host(CLOUD_TFA_HOST);
    world::add_host("uploads.example.com");
    // Nothing listens there, so that a name not in the list of hosts is refused at once.
    world::write_file("/etc/resolv.conf", "nameserver 127.0.0.9\noptions timeout:1 attempts:1\n");
    world::authority().write_client_files(world::kDeviceDir);
    world::authority().install();
    return look();
}

}  // namespace

Rig::Rig(std::vector<std::string> command)
    : command_(std::move(command)), present_(make_device()) {}

Observation Rig::run(const Kind &kind, const Disturbance &disturbance, const Files &files) {
    Observation observed;
    observed.kind = &kind;
    observed.disturbance = disturbance;
    restore(present_, files);
    observed.before = files;
    std::vector<std::string> words = command_;
    words.insert(words.end(), kind.words.begin(), kind.words.end());
    const bool slow = is_watched() || is_slow(disturbance);
    depot_.set_patience(slow ? kPatienceWithSlowRuns : kPatience);
    observed.run = run_disturbed(words, disturbance, slow);
    observed.uploads = depot_.take_uploads();
    observed.console = console_.text();
    console_.clear();
    present_ = observed.after = look();
    return observed;
}

}  // namespace reliability
