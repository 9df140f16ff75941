#include "contest.h"

#include <unistd.h>

#include <algorithm>

#include "files.h"
#include "runners.h"

namespace {

const std::string kConfig = "/mnt/data/iss_config/";
const std::string kSettings = kConfig + "current_config/";

std::size_t count_of(const std::string &text, const std::string &piece) {
    std::size_t count = 0;
    for (std::size_t at = text.find(piece); at != std::string::npos; at = text.find(piece, at + 1))
        ++count;
    return count;
}

std::string content_of(const std::string &dump) { return "the dump " + dump; }

void lay_out(const Contest &contest) {
    unlink(contest.marker.c_str());
    world::write_file(kSettings + "cloud_debug", "1");
    world::write_file(kSettings + "network.conf", "a setting");
    for (const Runner &runner : contest.runners)
        for (const std::string &dump : runner.dumps)
            world::write_file(dump, content_of(dump));
}

std::vector<std::vector<std::string>> commands(const Contest &contest, std::size_t runs,
                                               const std::string &kdump) {
    std::vector<std::vector<std::string>> all;
    for (std::size_t i = 0; i < runs; ++i) {
        std::vector<std::string> command = {kdump};
        const auto &arguments = contest.runners[i % contest.runners.size()].arguments;
        command.insert(command.end(), arguments.begin(), arguments.end());
        all.push_back(command);
    }
    return all;
}

std::string told(const std::string &what, std::size_t is, std::size_t should) {
    return is == should
               ? ""
               : what + ": " + std::to_string(is) + ", not " + std::to_string(should) + "; ";
}

// Whether uploads and files are what this runner leaves when it got through alone.
bool is_winner(const Contest &contest, const Runner &runner, HeldCloud &cloud) {
    const std::vector<std::string> uploads = cloud.uploads();
    if (runner.sends_nothing)
        return uploads.empty() && cloud.requests_for_urls() == 1;
    if (runner.sends_archive)
        return uploads.size() == 1 && uploads[0].find("a setting") != std::string::npos &&
               world::exists(kSettings + "network.conf");
    std::vector<std::string> sent;
    for (const std::string &dump : runner.dumps)
        sent.push_back(content_of(dump));
    for (const Runner &other : contest.runners) {
        for (const std::string &dump : other.dumps) {
            const bool mine = std::count(runner.dumps.begin(), runner.dumps.end(), dump) != 0;
            if (mine == world::exists(dump))
                return false;
        }
    }
    return uploads == sent && cloud.requests_for_urls() == sent.size();
}

}  // namespace

const std::vector<Contest> &contests() {
    static const std::string prefix = "/tmp/kdump_process_";
    static const Runner ram = {{"RAM"}, {"/tmp/cloud_dbg.txt"}};
    static const Runner flash = {{"FLASH"}, {kSettings + "cloud_dbg.txt"}};
    static const Runner all = {{"CONFIG", "ALL"}, {}, true};
    static const Runner named = {{"CONFIG", "network.conf"}, {}, false, true};
    static const std::vector<Contest> rows = {
        {"segmentrace", prefix + "segmentrace", {{{"segmentrace"}, {kConfig + "segmentrace.txt"}}}},
        {"dblock",
         prefix + "dblocktrace",
         {{{"dblock"}, {kConfig + "dblock.txt", kConfig + "dblock_backup.txt"}}}},
        {"upgradefailstate",
         prefix + "upgradefail_state",
         {{{"upgradefailstate"}, {"/tmp/upgrade_fail_state_upload.txt"}}}},
        {"connfaillog",
         prefix + "conn_fail_log",
         {{{"connfaillog"}, {kConfig + "cloud_conn_fail_log.txt"}}}},
        {"debugRamLog", prefix + "debug_info", {{{"debugRamLog"}, {"/tmp/debug_info.txt"}}}},
        {"watchdog", prefix + "watchdog", {{{"watchdog"}, {kSettings + "cloud_watchdog.log"}}}},
        {"RAM", prefix + "dbg_upload", {ram}},
        {"FLASH", prefix + "dbg_upload", {flash}},
        {"CONFIG ALL", prefix + "all_config", {all}},
        {"CONFIG network.conf", prefix + "all_config", {named}},
        {"RAM against FLASH", prefix + "dbg_upload", {ram, flash}},
        {"CONFIG ALL against CONFIG network.conf", prefix + "all_config", {all, named}},
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
        std::any_of(contest.runners.begin(), contest.runners.end(),
                    [&](const Runner &runner) { return is_winner(contest, runner, cloud); });
    if (!clean)
        wrong += "uploads and files are not those of one run; ";
    return wrong;
}
