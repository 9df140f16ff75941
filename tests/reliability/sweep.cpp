#include "sweep.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "faulty_calls.h"
#include "files.h"

namespace reliability {
namespace {

// Each how manieth place a sample takes. A run has thousands of allocations, so that two kinds are
// taken whole there only as far as it goes.
constexpr long kChosenAllocationStep = 23;
constexpr long kAllocationStep = 311;
constexpr long kCallStep = 7;
constexpr long kKillStep = 29;
constexpr long kWatchedStep = 2003;
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

template <class Attempt>
void Sweep::try_places(Disturbance disturbance, long count, long step, Attempt attempt) {
    for (disturbance.at = 1 + worker_ * step;; disturbance.at += options_.workers * step)
        if (!attempt(disturbance) && disturbance.at > count)
            return;
}

void Sweep::fail_allocations() {
    Disturbance disturbance;
    disturbance.trouble = Trouble::allocation;
    const RunResult counted = run(disturbance, fresh_files(*kind_)).run;
    const std::vector<long> &places = counted.places;
    for (const bool onward : {false, true}) {
        disturbance.onward = onward;
        if (options_.sample)
            fail_each_place(disturbance, places,
                            is_chosen() ? kChosenAllocationStep : kAllocationStep);
        else if (is_chosen())
            try_places(disturbance, counted.allocations, 1,
                       [this](const Disturbance &next) { return disturb(next); });
        else
            fail_each_place(disturbance, places, 1);
    }
}

// A few, others for each kind.
void Sweep::fail_watched_allocations() {
    if (options_.sample && !is_chosen())
        return;
    const long first =
        1 + (kind_ - kinds().data()) * kWatchedStep / static_cast<long>(kinds().size());
    Disturbance disturbance;
    disturbance.trouble = Trouble::allocation;
    for (const bool onward : {false, true}) {
        disturbance.onward = onward;
        disturbance.at = first + worker_ * kWatchedStep;
        while (disturb(disturbance))
            disturbance.at += options_.workers * kWatchedStep;
    }
}

// One allocation for each chain of calls that leads to one.
void Sweep::fail_each_place(Disturbance disturbance, const std::vector<long> &places, long step) {
    const auto stride = static_cast<size_t>(step);
    for (size_t i = worker_ * stride; i < places.size(); i += options_.workers * stride) {
        disturbance.at = places[i];
        disturb(disturbance);
    }
}

void Sweep::fail_calls(Caller caller) {
    Disturbance disturbance;
    disturbance.trouble = Trouble::call;
    disturbance.caller = caller;
    for (disturbance.call = 0; disturbance.call < faulty_calls().size(); ++disturbance.call)
        if (counts(caller).faulty[disturbance.call] > 0)
            try_places(disturbance, counts(caller).faulty[disturbance.call],
                       options_.sample && !is_chosen() ? kCallStep : 1,
                       [this](const Disturbance &next) { return disturb_each_way(next); });
}

void Sweep::kill_everywhere(Caller caller) {
    Disturbance disturbance;
    disturbance.trouble = Trouble::kill;
    disturbance.caller = caller;
    if (counts(caller).all > 0)
        try_places(disturbance, counts(caller).all, options_.sample && !is_chosen() ? kKillStep : 1,
                   [this](const Disturbance &next) { return kill_and_recover(next); });
}

// Every error of one call; in a sample one of them.
bool Sweep::disturb_each_way(Disturbance disturbance) {
    const size_t ways = faulty_calls()[disturbance.call].errors.size();
    if (options_.sample && !is_chosen()) {
        disturbance.error = static_cast<size_t>(disturbance.at / kCallStep) % ways;
        return disturb(disturbance);
    }
    bool is_reached = false;
    for (disturbance.error = 0; disturbance.error < ways; ++disturbance.error) {
        is_reached = disturb(disturbance) || is_reached;
        if (!is_reached)
            break;
    }
    return is_reached;
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
