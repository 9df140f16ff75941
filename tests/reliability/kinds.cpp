#include "kinds.h"

#define CONFIGURATION "/mnt/data/iss_config"
#define CURRENT CONFIGURATION "/current_config"
#define MARKER "/tmp/kdump_process_"

namespace reliability {
namespace {

constexpr bool kWithoutEnd = true;

Kind staged(const std::string &name, const std::string &marker, std::vector<Dump> dumps,
            bool without_end) {
    Kind kind;
    kind.name = name;
    const size_t blank = name.find(' ');
    kind.words = {name.substr(0, blank)};
    if (blank != std::string::npos)
        kind.words.push_back(name.substr(blank + 1));
    kind.marker = MARKER + marker;
    kind.dumps = std::move(dumps);
    kind.retries_without_end = without_end;
    return kind;
}

Kind rebooting(Kind kind) {
    kind.name += " after an upgrade";
    kind.reboots = true;
    return kind;
}

Kind configuration(const std::string &name) {
    Kind kind = staged("CONFIG", "all_config", {}, false);
    kind.name = "CONFIG " + (name.empty() ? "''" : name);
    kind.words.push_back(name);
    kind.sends_archive = name == "ALL";
    if (kind.sends_archive)
        kind.copied = "/tmp/all_config.tar.bz2";
    else if (!name.empty())
        kind.copied = "/tmp/" + name;
    return kind;
}

std::vector<Kind> all_kinds() {
    const Dump ram = {"/tmp/cloud_dbg.txt", "/tmp/cloud_ram_dbg.txt"};
    const Dump flash = {CURRENT "/cloud_dbg.txt", "/tmp/cloud_flash_dbg.txt"};
    const Kind debug_info =
        staged("debugRamLog", "debug_info", {{"/tmp/debug_info.txt", ""}}, kWithoutEnd);
    return {
        staged("segmentrace", "segmentrace",
               {{CONFIGURATION "/segmentrace.txt", "/tmp/segmentrace.txt"}}, kWithoutEnd),
        staged("RAM -f", "dbg_upload", {ram}, false),
        staged("dblock", "dblocktrace",
               {{CONFIGURATION "/dblock.txt", "/tmp/dblock.txt"},
                {CONFIGURATION "/dblock_backup.txt", "/tmp/dblock_backup.txt"}},
               kWithoutEnd),
        staged("upgradefailstate", "upgradefail_state",
               {{"/tmp/upgrade_fail_state_upload.txt", ""}}, kWithoutEnd),
        staged("connfaillog", "conn_fail_log",
               {{CONFIGURATION "/cloud_conn_fail_log.txt", "/tmp/cloud_conn_fail_log.txt"}},
               kWithoutEnd),
        debug_info,
        rebooting(debug_info),
        staged("watchdog", "watchdog", {{CURRENT "/cloud_watchdog.log", "/tmp/cloud_watchdog.log"}},
               kWithoutEnd),
        staged("RAM", "dbg_upload", {ram}, false),
        staged("FLASH -f", "dbg_upload", {flash}, false),
        staged("FLASH", "dbg_upload", {flash}, false),
        configuration("ALL"),
        configuration("network.conf"),
        configuration(""),
    };
}

}  // namespace

const std::vector<Kind> &kinds() {
    static const std::vector<Kind> list = all_kinds();
    return list;
}

Change allowed_change(const Kind &kind, const std::string &path) {
    if (path == CURRENT "/cloud_DetectDNS" || path == kind.marker || path == kind.copied)
        return Change::any;
    for (const Dump &dump : kind.dumps) {
        if (path == dump.source)
            return Change::removal;
        if (path == dump.staged)
            return Change::any;
    }
    return Change::none;
}

}  // namespace reliability
