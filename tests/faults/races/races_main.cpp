/*
 * Usage: races [--sample] [--kdump PROGRAM] [CONTEST]
 *
 * Starts two to sixteen runs of one kind, or of kinds with one marker, together, a thousand rounds
 * each: the cloud holds its first reply until all others have ended, so exactly one may have got
 * past the guard. --sample: twenty rounds. CONTEST: only the one of that name.
 */
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

Wanted read_arguments(int argc, char **argv) {
    Wanted wanted;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--sample")
            wanted.sample = true;
        else if (argument == "--kdump" && i + 1 < argc)
            wanted.kdump = std::filesystem::absolute(argv[++i]);
        else
            wanted.contest = argument;
    }
    return wanted;
}

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
    const Wanted wanted = read_arguments(argc, argv);
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
