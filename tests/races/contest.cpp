#include "contest.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "files.h"
#include "runners.h"

namespace {

using reliability::Dump;
using reliability::Kind;

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

const Kind &kind_named(const std::string &name) {
    const std::vector<Kind> &kinds = reliability::kinds();
    const auto found = std::find_if(kinds.begin(), kinds.end(),
                                    [&](const Kind &kind) { return kind.name == name; });
    if (found == kinds.end())
        throw std::invalid_argument("there is no kind " + name);
    return *found;
}

// Of kinds that share a marker.
Contest contest_of(const std::vector<std::string> &names) {
    Contest contest;
    for (const std::string &name : names) {
        const Kind &kind = kind_named(name);
        contest.name += (contest.name.empty() ? "" : " against ") + name;
        contest.marker = kind.marker;
        contest.kinds.push_back(kind);
    }
    return contest;
}

// Whether uploads and files are what this kind leaves when it got through alone.
bool is_winner(const Contest &contest, const Kind &winner, HeldCloud &cloud) {
    const std::vector<std::string> uploads = cloud.uploads();
    if (winner.sends_archive)
        return uploads.size() == 1 && uploads[0].find("a setting") != std::string::npos &&
               world::exists(kSettings + "network.conf");
    if (winner.dumps.empty())  // a URL is asked for, and no more
        return uploads.empty() && cloud.requests_for_urls() == 1;
    std::vector<std::string> sent;
    for (const Dump &dump : winner.dumps)
        sent.push_back(content_of(dump));
    for (const Kind &kind : contest.kinds)
        for (const Dump &dump : kind.dumps)
            if (world::exists(dump.source) == (&kind == &winner))
                return false;
    return uploads == sent && cloud.requests_for_urls() == sent.size();
}

}  // namespace

const std::vector<Contest> &contests() {
    static const std::vector<Contest> rows = {
        contest_of({"segmentrace"}),
        contest_of({"dblock"}),
        contest_of({"upgradefailstate"}),
        contest_of({"connfaillog"}),
        contest_of({"debugRamLog"}),
        contest_of({"watchdog"}),
        contest_of({"RAM"}),
        contest_of({"FLASH"}),
        contest_of({"CONFIG ALL"}),
        contest_of({"CONFIG network.conf"}),
        contest_of({"RAM", "FLASH"}),
        contest_of({"CONFIG ALL", "CONFIG network.conf"}),
    };
    return rows;
}

std::string play(const Contest &contest, std::size_t runs, const std::string &kdump,
                 HeldCloud &cloud, world::Console &console) {
    lay_out(contest);
    console.clear();
    cloud.hold();
    Runners runners(commands(contest, runs, kdump));
    runners.start();
    std::string wrong = told("runs refused", runners.wait_for(runs - 1), runs - 1);
    wrong += told("requests held", cloud.held(), 1);
    cloud.go_on();
    wrong += told("runs ended", runners.wait_for(runs), runs);
    wrong += told("runs failed", runners.failed(), 0);
    const std::string text = console.text_without_stamps();
    wrong += told("banners", count_of(text, "##kdump##"), runs);
    wrong += told("runs past the guard", count_of(text, " KDUMPS_url "), 1);
    wrong += told("lines of refused runs", count_of(text, " already processing, exit\n"), runs - 1);
    wrong += told("markers left", world::exists(contest.marker) ? 1 : 0, 0);
    const bool clean =
        std::any_of(contest.kinds.begin(), contest.kinds.end(),
                    [&](const Kind &kind) { return is_winner(contest, kind, cloud); });
    if (!clean)
        wrong += "uploads and files are not those of one run; ";
    return wrong;
}
