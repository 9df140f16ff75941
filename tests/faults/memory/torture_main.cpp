// Runs every public function with each allocation that it and its libraries make failing in turn, once
// and from then on, and compares the outcome with its documentation.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "operation.h"
#include "servers.h"
#include "sweep.h"
#include "testing/private_world.h"

namespace {

constexpr std::size_t kSampledPoints = 25;

struct Wanted {
    bool alone = false;
    bool sample = false;
    bool functions = false;
    std::size_t at = 0;  // 0: every allocation
    std::string word;

    bool wants(const Operation &operation) const {
        return (!alone || operation.reach == Reach::kAlone) &&
               operation.name.find(word) != std::string::npos;
    }
};

struct Totals {
    std::size_t operations = 0;
    std::size_t points = 0;
    std::size_t asserted = 0;
    std::size_t complaints = 0;
    std::map<std::string, std::size_t> library_faults;
};

const char *form_word(Form form) { return form == Form::kWarm ? "warm" : "cold"; }

// All, or a sample that leaves out most of OpenSSL's: these are many and much alike.
std::vector<std::size_t> chosen_points(const Operation &operation, const Needs &needs,
                                       const Wanted &wanted) {
    if (wanted.at != 0)
        return {wanted.at};
    const bool samples = wanted.sample && operation.reach != Reach::kAlone;
    std::vector<std::size_t> points = samples ? needs.not_of_openssl : std::vector<std::size_t>();
    const std::size_t stride =
        samples ? std::max<std::size_t>(needs.allocations / kSampledPoints, 1) : 1;
    for (std::size_t point = 1; point <= needs.allocations; point += stride)
        points.push_back(point);
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
}

unsigned long run(const Operation &operation, Form form, const Wanted &wanted, Totals &totals) {
    unsigned long outcomes = 1;
    const Needs needs = count_allocations(operation, form);
    const std::vector<std::size_t> points = chosen_points(operation, needs, wanted);
    for (const auto mode : {MEMORY_FAILS_ONCE, MEMORY_FAILS_ONWARD}) {
        const Tally tally = sweep(operation, form, mode, points);
        std::printf("%s, %s, %s: %zu allocations, %zu failure points\n", operation.name.c_str(),
                    form_word(form), mode == MEMORY_FAILS_ONCE ? "once" : "from then on",
                    needs.allocations, tally.points);
        if (tally.complaints != 0)
            std::printf("  %zu COMPLAINTS, the first at %s\n", tally.complaints,
                        tally.complaint.c_str());
        outcomes |= tally.outcomes;
        totals.points += tally.points;
        totals.asserted += tally.asserted;
        totals.complaints += tally.complaints;
        for (const auto &[place, times] : tally.library_faults)
            totals.library_faults[place] += times;
        std::fflush(stdout);
    }
    return outcomes;
}

// An allowed outcome that never occurs is a complaint.
void miss_outcomes(const Operation &operation, unsigned long outcomes, Totals &totals) {
    for (std::size_t i = 0; i < operation.allowed.size(); ++i) {
        if ((outcomes >> i & 1) == 0) {
            ++totals.complaints;
            std::printf("  COMPLAINT: %s never had the outcome <%s>\n", operation.name.c_str(),
                        operation.allowed[i].c_str());
        }
    }
}

// An operation that fails with enough memory is a complaint.
void run(const Operation &operation, const Wanted &wanted, Totals &totals) {
    ++totals.operations;
    try {
        unsigned long outcomes = run(operation, Form::kWarm, wanted, totals);
        if (operation.reach == Reach::kNetworkFromCold)
            outcomes |= run(operation, Form::kCold, wanted, totals);
        const bool whole = !wanted.sample || operation.reach == Reach::kAlone;
        if (whole && wanted.at == 0)
            miss_outcomes(operation, outcomes, totals);
    } catch (const std::runtime_error &problem) {
        ++totals.complaints;
        std::printf("  COMPLAINT: %s\n", problem.what());
    }
}

int report(const Totals &totals) {
    std::printf("%zu operations, %zu failure points, %zu documented assertions, %zu complaints\n",
                totals.operations, totals.points, totals.asserted, totals.complaints);
    for (const auto &[place, times] : totals.library_faults)
        std::printf("%zu runs ended by %s\n", times, place.c_str());
    return totals.complaints == 0 && totals.operations != 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
    Wanted wanted;
    bool functions = false;
    CLI::App app("Fails each allocation of every public function.");
    app.add_flag("--alone", wanted.alone, "only the operations that need no server");
    app.add_flag("--sample", wanted.sample, "fewer points of the others");
    app.add_flag("--functions", functions, "names the functions, and ends");
    app.add_option("--at", wanted.at, "only this allocation, alone and with all that follow");
    app.add_option("WORD", wanted.word, "only the operations with this word in their name");
    CLI11_PARSE(app, argc, argv);
    const Operations operations = all_operations();
    if (functions) {
        for (const Operation &operation : operations)
            std::printf("%s\n", operation.function().c_str());
        return 0;
    }
    world::enter();
    world::reset();
    start_servers();
    Totals totals;
    for (const Operation &operation : operations) {
        if (wanted.wants(operation))
            run(operation, wanted, totals);
    }
    return report(totals);
}
