#include "tests/faults/sweep.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "testing/files.h"
#include "tests/faults/syscalls/faulty_calls.h"

namespace reliability {
namespace {

constexpr const char *kChosen[] = {"segmentrace", "RAM -f"};

}  // namespace

Tally &Tally::operator+=(const Tally &other) {
    faults += other.faults;
    runs += other.runs;
    lost += other.lost;
    violations += other.violations;
    for (const auto &[name, count] : other.exceptions)
        exceptions[name] += count;
    return *this;
}

Tally Sweep::over(const Kind &kind) {
    kind_ = &kind;
    tally_ = {};
    if (!options_.only.empty()) {
        const Disturbance disturbance = read_disturbance(options_.only);
        if (disturbance.trouble == Trouble::kill)
            kill_and_recover(disturbance);
        else
            disturb(disturbance);
        return tally_;
    }
    if (options_.watched) {
        fail_watched_allocations();
        return tally_;
    }
    leave_alone();
    if (options_.name == "allocations")
        fail_allocations();
    for (const Caller caller : {Caller::program, Caller::command}) {
        if (options_.name == "syscalls")
            fail_calls(caller);
        if (options_.name == "kills")
            kill_everywhere(caller);
    }
    return tally_;
}

bool Sweep::is_chosen() const {
    return std::find(std::begin(kChosen), std::end(kChosen), kind_->name) != std::end(kChosen);
}

void Sweep::try_places(Disturbance disturbance, long count, long step,
                       const std::function<bool(const Disturbance &)> &attempt) {
    for (disturbance.at = 1 + worker_ * step;; disturbance.at += options_.workers * step)
        if (!attempt(disturbance) && disturbance.at > count)
            return;
}

bool Sweep::disturb(const Disturbance &disturbance) {
    const Observation observed = run(disturbance, fresh_files(*kind_));
    judge(disturbance, check(observed));
    return observed.run.disturbed;
}

// Followed from beginning to end, so that all it calls and touches is seen.
void Sweep::leave_alone() {
    const Observation observed = run({}, fresh_files(*kind_));
    usual_ = observed.run;
    usual_.own_calls.faulty.resize(faulty_calls().size());
    usual_.command_calls.faulty.resize(faulty_calls().size());
    judge({}, check(observed));
    for (const std::string &path : missing_in_cloud(*kind_, observed.before, observed.uploads))
        judge({}, {{"not sent: " + path}, {}, 0});
}

Observation Sweep::run(const Disturbance &disturbance, const Files &files) {
    Observation observed = rig_.run(*kind_, disturbance, files);
    ++tally_.runs;
    tally_.faults += observed.run.disturbed ? 1 : 0;
    return observed;
}

void Sweep::judge(const Disturbance &disturbance, const Verdict &verdict) {
    for (const char *name : verdict.exceptions)
        ++tally_.exceptions[name];
    tally_.lost += verdict.lost;
    for (const std::string &violation : verdict.violations) {
        ++tally_.violations;
        fmt::print("VIOLATION {}: {}\n{}  again: reliability_sweep {}{} --kind \"{}\" --only {}\n",
                   kind_->name, violation,
                   options_.watched ? world::read_file_if_any(CHECKER_REPORT) : "", options_.name,
                   options_.watched ? " --watched" : "", kind_->name, disturbance.text());
        std::fflush(stdout);
    }
}

}  // namespace reliability
