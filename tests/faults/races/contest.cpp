#include "contest.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <thread>

#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/spawn.h"

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

// Runs of the contest's kinds. They wait for each other at their marker (meeting_point.c).
class Runners {
  public:
    Runners(const Contest &contest, std::size_t runs, const std::string &kdump) {
        constexpr const char *kMeetingPoint = "/run/world/meeting";
        const uint32_t come_and_expected[] = {0, static_cast<uint32_t>(runs)};
        world::write_file(kMeetingPoint, {reinterpret_cast<const char *>(come_and_expected),
                                          sizeof come_and_expected});
        for (std::size_t i = 0; i < runs; ++i) {
            std::vector<std::string> command = contest.kinds[i % contest.kinds.size()].words;
            command.insert(command.begin(), kdump);
            running_.push_back(world::spawn(world::Command(command)
                                                .set("MEETING_POINT", kMeetingPoint)
                                                .set("LD_PRELOAD", MEETING_POINT_LIBRARY)
                                                .set("ASAN_OPTIONS", "verify_asan_link_order=0")
                                                .quiet()));
        }
    }

    // Waits until `count` have ended in all, or the time is over; how many have.
    std::size_t wait_for(std::size_t count) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(15);
        while (ended_ < count && std::chrono::steady_clock::now() < end) {
            running_.remove_if([this](world::Child &child) {
                const auto finished = child.poll();
                ended_ += finished.has_value();
                failed_ += finished && finished->status != 0;
                return finished.has_value();
            });
            std::this_thread::sleep_for(std::chrono::microseconds(300));
        }
        return ended_;
    }

    // How many ended otherwise than with exit status 0.
    std::size_t failed() const { return failed_; }

  private:
    std::list<world::Child> running_;
    std::size_t ended_ = 0;
    std::size_t failed_ = 0;
};

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
    Runners runners(contest, runs, kdump);
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
