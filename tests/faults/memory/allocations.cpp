// reliability_sweep allocations: allocations of the program fail in turn.
#include "tests/faults/sweep.h"

namespace reliability {
namespace {

// A sample takes one place of so many. A run has thousands of allocations, so a sample leaves out
// some even of the chosen kinds.
constexpr long kChosenAllocationStep = 23;
constexpr long kAllocationStep = 311;
constexpr long kWatchedStep = 2003;

}  // namespace

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
    const long first = 1 + (kind_ - world::kinds().data()) * kWatchedStep /
                               static_cast<long>(world::kinds().size());
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

}  // namespace reliability
