// reliability_sweep syscalls: system calls of the program and its commands fail in turn.
#include "tests/faults/sweep.h"
#include "tests/faults/syscalls/faulty_calls.h"

namespace reliability {
namespace {

constexpr long kCallStep = 7;  // in a sample

}  // namespace

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

}  // namespace reliability
