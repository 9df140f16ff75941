#include "testing/kinds.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#define CONFIGURATION "/mnt/data/iss_config"
#define CURRENT CONFIGURATION "/current_config"

namespace world {
namespace {

// A kind that retries a failed upload forever.
Kind endless(const std::string &name, const std::string &marker, std::vector<Dump> dumps) {
    Kind kind;
    kind.name = name;
    std::istringstream words(name);
    for (std::string word; words >> word;)
        kind.words.push_back(word == "''" ? "" : word);
    kind.marker = "/tmp/kdump_process_" + marker;
    kind.dumps = std::move(dumps);
    kind.retries_forever = true;
    return kind;
}

Kind limited(const std::string &name, const std::string &marker, std::vector<Dump> dumps) {
    Kind kind = endless(name, marker, std::move(dumps));
    kind.retries_forever = false;
    return kind;
}

Kind configuration(const std::string &argument, const std::string &copied) {
    Kind kind = limited("CONFIG " + argument, "all_config", {});
    kind.sends_archive = argument == "ALL";
    kind.copied = copied;
    return kind;
}

Kind forced(Kind kind) {
    kind.name += " -f";
    kind.words.emplace_back("-f");
    kind.is_variant = true;
    return kind;
}

Kind after_upgrade(Kind kind) {
    kind.name += " after an upgrade";
    kind.reboots = true;
    kind.is_variant = true;
    return kind;
}

std::vector<Kind> with_variants() {
    const Kind debug_info = endless("debugRamLog", "debug_info",
                                    {{"/tmp/debug_info.txt",
                                      "",
                                      150000,
                                      {"meminfo: %u kB free", "process %u: 3 threads",
                                       "softirq: %u net-rx", "slab: %u objects"}}});
    const Kind ram = limited("RAM", "dbg_upload",
                             {{"/tmp/cloud_dbg.txt",
                               "/tmp/cloud_ram_dbg.txt",
                               96000,
                               {"agent: request %u sent", "agent: reply took %u ms",
                                "agent: queue holds %u events", "agent: token renewed for %u s"}}});
    const Kind flash =
        limited("FLASH", "dbg_upload",
                {{CURRENT "/cloud_dbg.txt",
                  "/tmp/cloud_flash_dbg.txt",
                  40000,
                  {"agent: request %u sent", "agent: stored event %u",
                   "agent: flash page %u written", "agent: started with configuration %u"}}});
    return {
        endless("segmentrace", "segmentrace",
                {{CONFIGURATION "/segmentrace.txt",
                  "/tmp/segmentrace.txt",
                  312000,
                  {"radio0: segment %u acked after retry", "radio1: segment %u lost, rate lowered",
                   "bridge: flushed %u stale entries", "radio0: beacon interval drift %u us"}}}),
        endless("dblock", "dblocktrace",
                {{CONFIGURATION "/dblock.txt",
                  "/tmp/dblock.txt",
                  48000,
                  {"config db: lock held by pid %u", "config db: waited %u ms for the writer",
                   "config db: reader %u timed out", "config db: lock file is %u s old"}},
                 {CONFIGURATION "/dblock_backup.txt",
                  "/tmp/dblock_backup.txt",
                  32000,
                  {"backup db: copy %u is incomplete", "backup db: lock held by pid %u",
                   "backup db: retry in %u ms", "backup db: generation %u restored"}}}),
        endless("upgradefailstate", "upgradefail_state",
                {{"/tmp/upgrade_fail_state_upload.txt",
                  "",
                  9000,
                  {"upgrade: block %u failed its check", "upgrade: flash erase took %u ms",
                   "upgrade: image offset %u", "upgrade: rolled back to slot %u"}}}),
        endless("connfaillog", "conn_fail_log",
                {{CONFIGURATION "/cloud_conn_fail_log.txt",
                  "/tmp/cloud_conn_fail_log.txt",
                  64000,
                  {"cloud: connect attempt %u timed out", "dns: query %u without answer",
                   "gateway: ping %u lost", "cloud: next attempt in %u s"}}}),
        debug_info,
        after_upgrade(debug_info),
        endless("watchdog", "watchdog",
                {{CURRENT "/cloud_watchdog.log",
                  "/tmp/cloud_watchdog.log",
                  24000,
                  {"watchdog: agent %u does not answer", "watchdog: restarted agent after %u s",
                   "watchdog: heartbeat %u late", "watchdog: load average %u"}}}),
        ram,
        forced(ram),
        flash,
        forced(flash),
        configuration("ALL", "/tmp/all_config.tar.bz2"),
        configuration("network.conf", "/tmp/network.conf"),
        configuration("''", ""),
    };
}

std::vector<Dump> each_dump_once() {
    std::vector<Dump> dumps;
    for (const Kind &kind : kinds())
        if (!kind.is_variant)
            dumps.insert(dumps.end(), kind.dumps.begin(), kind.dumps.end());
    return dumps;
}

}  // namespace

const std::vector<Kind> &kinds() {
    static const std::vector<Kind> list = with_variants();
    return list;
}

const Kind &kind_named(const std::string &name) {
    const auto found = std::find_if(kinds().begin(), kinds().end(),
                                    [&](const Kind &kind) { return kind.name == name; });
    if (found == kinds().end())
        throw std::out_of_range("there is no kind " + name);
    return *found;
}

const std::vector<Dump> &all_dumps() {
    static const std::vector<Dump> dumps = each_dump_once();
    return dumps;
}

}  // namespace world
