/* reliability_sweep allocations|syscalls|kills: runs the program once per place and trouble. */
#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "testing/private_world.h"
#include "testing/spawn.h"
#include "tests/faults/sweep.h"

namespace reliability {
namespace {

using nlohmann::json;
using world::Kind;
using world::kinds;
using Tallies = std::map<std::string, Tally>;

const std::vector<std::string> kMemoryChecker = {VALGRIND,
                                                 "-q",
                                                 "--vgdb=no",
                                                 "--soname-synonyms=somalloc=nouserintercepts",
                                                 "--error-exitcode=99",
                                                 "--leak-check=full",
                                                 "--show-leak-kinds=definite,indirect",
                                                 "--errors-for-leak-kinds=definite,indirect",
                                                 "--suppressions=" LIBRARY_LEAKS,
                                                 "--child-silent-after-fork=yes",
                                                 "--log-file=" CHECKER_REPORT};

std::vector<std::string> command_of(const SweepOptions &options) {
    std::vector<std::string> command;
    if (options.watched)
        command = kMemoryChecker;
    command.push_back(options.program);
    return command;
}

bool is_chosen(const SweepOptions &options, const Kind &kind) {
    return options.kind.empty() || options.kind == kind.name;
}

// In a process of its own; the tallies go to `report`.
int work(const SweepOptions &options, unsigned worker, int report) {
    world::Options world;
    world.keep = {std::filesystem::path(options.program).parent_path().string()};
    world::enter(world);
    try {
        Rig rig(command_of(options));
        Sweep sweep(options, worker, rig);
        json tallies;
        for (const Kind &kind : kinds()) {
            if (!is_chosen(options, kind))
                continue;
            const Tally tally = sweep.over(kind);
            tallies[kind.name] = {tally.faults, tally.runs, tally.lost, tally.violations,
                                  tally.exceptions};
        }
        const std::string text = tallies.dump();
        return write(report, text.data(), text.size()) == static_cast<ssize_t>(text.size()) ? 0 : 1;
    } catch (const std::exception &error) {
        fmt::print(stderr, "reliability_sweep: {}\n", error.what());
        return 1;
    }
}

void add(const std::string &text, Tallies &tallies) {
    const json report = json::parse(text);
    for (const auto &[kind, numbers] : report.items())
        tallies[kind] += {numbers[0], numbers[1], numbers[2], numbers[3], numbers[4]};
}

std::string read_all(int descriptor) {
    std::string text;
    char piece[4096];
    for (ssize_t got = 0; (got = read(descriptor, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<size_t>(got));
    return text;
}

void print(const std::string &name, const Tally &tally) {
    fmt::print("{:<28} {:>7} faults {:>7} runs {:>3} dumps lost", name, tally.faults, tally.runs,
               tally.lost);
    for (const auto &[exception, count] : tally.exceptions)
        fmt::print(", {} x {}", count, exception);
    fmt::print("\n");
}

// True when all workers ended well; adds up what they report.
bool run_workers(const SweepOptions &options, Tallies &tallies) {
    std::vector<int> reports;
    for (unsigned worker = 0; worker < options.workers; ++worker)
        reports.push_back(memfd_create("report", MFD_CLOEXEC));
    const std::vector<int> results =
        world::run_together(static_cast<int>(options.workers), [&](int worker) {
            return work(options, static_cast<unsigned>(worker),
                        reports[static_cast<size_t>(worker)]);
        });
    for (size_t worker = 0; worker < reports.size(); ++worker) {
        lseek(reports[worker], 0, SEEK_SET);
        if (results[worker] == 0)
            add(read_all(reports[worker]), tallies);
        close(reports[worker]);
    }
    return std::count(results.begin(), results.end(), 0) == static_cast<long>(results.size());
}

int run(const SweepOptions &options) {
    const auto start = std::chrono::steady_clock::now();
    Tallies tallies;
    const bool all_well = run_workers(options, tallies);
    Tally total;
    for (const Kind &kind : kinds()) {
        if (!is_chosen(options, kind))
            continue;
        const Tally &tally = tallies[kind.name];
        print(kind.name, tally);
        total += tally;
    }
    print(options.name, total);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    fmt::print("{} violations, {:.1f} minutes\n", total.violations, took.count() / 60);
    return all_well && total.violations == 0 ? 0 : 1;
}

}  // namespace
}  // namespace reliability

int main(int argc, char **argv) {
    reliability::SweepOptions options;
    options.program = KDUMP_PROGRAM;
    CLI::App app("Runs kdump again and again, each time with one thing going wrong.");
    app.add_option("SWEEP", options.name, "what goes wrong")
        ->required()
        ->check(CLI::IsMember({"allocations", "syscalls", "kills"}));
    app.add_flag("--sample", options.sample, "two kinds whole, of the others some places");
    app.add_flag("--watched", options.watched, "some places, under a memory checker");
    app.add_option("--kind", options.kind, "only this kind, as the summary names it");
    app.add_option("--only", options.only, "only this trouble, as a violation names it");
    app.add_option("--program", options.program, "another kdump");
    app.add_option("--workers", options.workers, "how many at a time")->check(CLI::Range(1, 64));
    CLI11_PARSE(app, argc, argv);
    options.program = std::filesystem::absolute(options.program).string();
    if (!options.only.empty())
        options.workers = 1;
    return reliability::run(options);
}
