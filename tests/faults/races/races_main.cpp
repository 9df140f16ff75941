// Starts two to sixteen runs of one kind, or of kinds with one marker, together, a thousand rounds
// each: the cloud holds its first reply until all others have ended, so exactly one may have got past
// the guard.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <string>

#include "contest.h"
#include "testing/private_world.h"

namespace {

constexpr std::size_t kRounds = 1000;
constexpr std::size_t kSampledRounds = 20;
constexpr std::size_t kFewest = 2;
constexpr std::size_t kMost = 16;

struct Wanted {
    bool sample = false;
    std::string kdump = KDUMP_PROGRAM;
    std::string contest;
};

// False as soon as a round went wrong.
bool play_all(const Contest &contest, const Wanted &wanted, Arena &arena) {
    const std::size_t rounds = wanted.sample ? kSampledRounds : kRounds;
    std::size_t runs = 0;
    for (std::size_t round = 0; round < rounds; ++round) {
        const std::size_t now = kFewest + round % (kMost - kFewest + 1);
        const std::string complaint = play(contest, now, wanted.kdump, arena);
        runs += now;
        if (!complaint.empty()) {
            std::printf("%s, round %zu, %zu runs: %s\n", contest.name.c_str(), round, now,
                        complaint.c_str());
            return false;
        }
    }
    std::printf("%s: %zu rounds, %zu runs\n", contest.name.c_str(), rounds, runs);
    std::fflush(stdout);
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    Wanted wanted;
    CLI::App app("Starts runs that compete for a marker.");
    app.add_flag("--sample", wanted.sample, "twenty rounds each");
    app.add_option("--kdump", wanted.kdump, "another kdump");
    app.add_option("CONTEST", wanted.contest, "only the one of that name");
    CLI11_PARSE(app, argc, argv);
    wanted.kdump = std::filesystem::absolute(wanted.kdump).string();
    world::Options options;
    options.keep = {std::filesystem::path(wanted.kdump).parent_path()};
    world::enter(options);
    world::reset();
    Arena arena;
    bool right = true;
    std::size_t played = 0;
    for (const Contest &contest : contests()) {
        if (!wanted.contest.empty() && wanted.contest != contest.name)
            continue;
        right = play_all(contest, wanted, arena) && right;
        ++played;
    }
    return right && played != 0 ? 0 : 1;
}
