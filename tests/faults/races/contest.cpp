#include "contest.h"

#include <unistd.h>

#include <algorithm>
#include <map>

#include "runners.h"
#include "testing/files.h"
#include "testing/private_world.h"

namespace {

using world::Dump;
using world::Kind;

const std::string kSettings = "/mnt/data/iss_config/current_config/";

std::size_t count_of(const std::string &text, const std::string &piece) {
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1))
        ++count;
    return count;
}

std::string content_of(const Dump &dump) { return "the dump " + dump.source; }

void lay_out(const Contest &contest) {
    unlink(contest.marker.c_str());
    world::write_file(kSettings + "cloud_debug", "1");
    world::write_file(kSettings + "network.conf", "a setting");
    for (const Kind &kind : contest.kinds)
        for (const Dump &dump : kind.dumps)
            world::write_file(dump.source, content_of(dump));
}

std::vector<std::vector<std::string>> commands(const Contest &contest, std::size_t runs,
                                               const std::string &kdump) {
    std::vector<std::vector<std::string>> all;
    for (std::size_t i = 0; i < runs; ++i) {
        std::vector<std::string> command = {kdump};
        const auto &words = contest.kinds[i % contest.kinds.size()].words;
        command.insert(command.end(), words.begin(), words.end());
        all.push_back(command);
    }
    return all;
}

std::string told(const std::string &what, std::size_t is, std::size_t should) {
    return is == should
               ? ""
               : what + ": " + std::to_string(is) + ", not " + std::to_string(should) + "; ";
}

struct Deliveries {
    std::size_t url_requests = 0;
    std::vector<std::string> uploads;
};

Deliveries deliveries_of(const world::ExchangeRecord &record) {
    Deliveries found;
    for (const world::Exchange &exchange : record.all()) {
        found.url_requests += exchange.service == "tfa";
        if (exchange.method == "PUT")
            found.uploads.push_back(exchange.body);
    }
    return found;
}

// Whether uploads and files are what this kind leaves when it got through alone.
bool is_winner(const Contest &contest, const Kind &winner, const Deliveries &found) {
    if (winner.sends_archive)
        return found.uploads.size() == 1 &&
               found.uploads[0].find("a setting") != std::string::npos &&
               world::exists(kSettings + "network.conf");
    if (winner.dumps.empty())  // a URL is asked for, and no more
        return found.uploads.empty() && found.url_requests == 1;
    std::vector<std::string> sent;
    for (const Dump &dump : winner.dumps)
        sent.push_back(content_of(dump));
    for (const Kind &kind : contest.kinds)
        for (const Dump &dump : kind.dumps)
            if (world::exists(dump.source) == (&kind == &winner))
                return false;
    return found.uploads == sent && found.url_requests == sent.size();
}

world::FakeCloudSetup held_cloud(world::Gate &gate) {
    world::name_cloud_hosts();
    world::authority().write_client_files(world::kDeviceDir);
    world::FakeCloudSetup setup;
    setup.cloud.keeps_files = false;
    setup.cloud.gate = &gate;
    setup.records_whole_bodies = true;
    return setup;
}

}  // namespace

std::vector<Contest> contests() {
    std::vector<Contest> alone;
    std::map<std::string, Contest> shared;  // by marker
    for (const Kind &kind : world::kinds()) {
        if (kind.is_variant || !kind.asks_for_url())
            continue;
        alone.push_back({kind.name, kind.marker, {kind}});
        Contest &contest = shared[kind.marker];
        contest.name += (contest.kinds.empty() ? "" : " against ") + kind.name;
        contest.marker = kind.marker;
        contest.kinds.push_back(kind);
    }
    for (const auto &[marker, contest] : shared)
        if (contest.kinds.size() > 1)
            alone.push_back(contest);
    return alone;
}

Arena::Arena() : fake(held_cloud(gate)) {}

std::string play(const Contest &contest, std::size_t runs, const std::string &kdump, Arena &arena) {
    lay_out(contest);
    arena.console.clear();
    arena.fake.record.take();
    arena.gate.close();
    Runners runners(commands(contest, runs, kdump));
    runners.start();
    std::string wrong = told("runs refused", runners.wait_for(runs - 1), runs - 1);
    arena.gate.wait_for_arrival();
    wrong += told("requests held", deliveries_of(arena.fake.record).url_requests, 1);
    arena.gate.open();
    wrong += told("runs ended", runners.wait_for(runs), runs);
    wrong += told("runs failed", runners.failed(), 0);
    const std::string text = arena.console.text_without_stamps();
    wrong += told("banners", count_of(text, "##kdump##"), runs);
    wrong += told("runs past the guard", count_of(text, " KDUMPS_url "), 1);
    wrong += told("lines of refused runs", count_of(text, " already processing, exit\n"), runs - 1);
    wrong += told("markers left", world::exists(contest.marker) ? 1 : 0, 0);
    arena.fake.wait_until_idle();
    const Deliveries found = deliveries_of(arena.fake.record);
    arena.fake.cloud.forget();
    const bool clean =
        std::any_of(contest.kinds.begin(), contest.kinds.end(),
                    [&](const Kind &kind) { return is_winner(contest, kind, found); });
    if (!clean)
        wrong += "uploads and files are not those of one run; ";
    return wrong;
}
