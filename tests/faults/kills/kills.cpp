// reliability_sweep kills: the program is killed at each system call; later runs deliver the dump.
#include "tests/faults/sweep.h"

namespace reliability {
namespace {

constexpr long kKillStep = 29;  // in a sample

}  // namespace

void Sweep::kill_everywhere(Caller caller) {
    Disturbance disturbance;
    disturbance.trouble = Trouble::kill;
    disturbance.caller = caller;
    if (counts(caller).all > 0)
        try_places(disturbance, counts(caller).all, options_.sample && !is_chosen() ? kKillStep : 1,
                   [this](const Disturbance &next) { return kill_and_recover(next); });
}

// The run that is killed, the one after it, and the one after somebody has removed the marker.
bool Sweep::kill_and_recover(const Disturbance &disturbance) {
    Observation observed = run(disturbance, fresh_files(*kind_));
    judge(disturbance, check(observed));
    if (!observed.run.disturbed)
        return false;
    std::vector<Upload> uploads = observed.uploads;
    Files files = observed.after;
    if (files.count(kind_->marker) != 0) {
        const Observation busy = run({}, files);
        judge(disturbance, check_busy(busy));
        files = busy.after;
        files.erase(kind_->marker);
    }
    observed = run({}, files);
    judge(disturbance, check(observed));
    uploads.insert(uploads.end(), observed.uploads.begin(), observed.uploads.end());
    for (const std::string &path : missing_in_cloud(*kind_, fresh_files(*kind_), uploads))
        judge(disturbance, {{"never sent: " + path}, {}, 1});
    return true;
}

}  // namespace reliability
