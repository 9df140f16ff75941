/* Runs every disturbance of one sort, for every kind of dump, shared among workers. */
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/faults/rig.h"

namespace reliability {

// Where a memory checker puts what it found in a run.
#define CHECKER_REPORT "/run/world/checker"

struct SweepOptions {
    std::string name;  // "allocations", "syscalls" or "kills"
    std::string program;
    std::string kind;  // only this one
    std::string only;  // only this disturbance
    bool sample = false;
    bool watched = false;  // under a memory checker, at few places
    unsigned workers = 2;
};

struct Tally {
    long faults = 0;
    long runs = 0;
    long lost = 0;
    long violations = 0;
    std::map<std::string, long> exceptions;

    Tally &operator+=(const Tally &other);
};

// The share of one worker: of the numbered places, every Nth for N workers.
class Sweep {
  public:
    Sweep(const SweepOptions &options, unsigned worker, Rig &rig)
        : options_(options), worker_(worker), rig_(rig) {}

    Tally over(const Kind &kind);

  private:
    // Whether the kind is one of the two that are taken whole in a sample too.
    bool is_chosen() const;

    // memory/allocations.cpp
    void fail_allocations();
    void fail_watched_allocations();
    void fail_each_place(Disturbance disturbance, const std::vector<long> &places, long step);
    // syscalls/syscalls.cpp
    void fail_calls(Caller caller);
    bool disturb_each_way(Disturbance disturbance);
    // kills/kills.cpp
    void kill_everywhere(Caller caller);
    bool kill_and_recover(const Disturbance &disturbance);

    // Calls `attempt` place after place, as many as an undisturbed run has, and on for as long as
    // they are reached.
    void try_places(Disturbance disturbance, long count, long step,
                    const std::function<bool(const Disturbance &)> &attempt);
    const CallCounts &counts(Caller caller) const {
        return caller == Caller::program ? usual_.own_calls : usual_.command_calls;
    }

    // These tell whether the place was reached.
    bool disturb(const Disturbance &disturbance);
    void leave_alone();

    Observation run(const Disturbance &disturbance, const Files &files);
    void judge(const Disturbance &disturbance, const Verdict &verdict);

    const SweepOptions &options_;
    const unsigned worker_;
    Rig &rig_;
    const Kind *kind_ = nullptr;
    RunResult usual_;  // of an undisturbed run
    Tally tally_;
};

}  // namespace reliability
