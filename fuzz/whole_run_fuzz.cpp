// A whole run of the program on a device in any state, with any replies: it loses no dump and
// leaves nothing behind.
//
// Input: the program's arguments, one per line; a line with the letters of the device's state (see
// arrange); one line each for the files of endpoint, name servers and switches; then the replies,
// in the order of the requests. Later requests succeed, so every run ends.
#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <set>

#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "fuzz.h"
#include "kdump/dump_kinds.h"
#include "log/log.h"
#include "replies.h"
#include "testing/calls.h"
#include "testing/files.h"
#include "testing/kinds.h"

// main() of kdump/main.cpp.
int run_program(int argc, char **argv);

#define ISS_CONFIG "/mnt/data/iss_config/"
#define CURRENT_CONFIG ISS_CONFIG "current_config/"
#define ARCHIVE "/tmp/all_config.tar.bz2"

namespace {

using world::all_dumps;
using world::Dump;

constexpr const char *kSwitch = CURRENT_CONFIG "cloud_DetectDNS";
constexpr const char *kDebug = CURRENT_CONFIG "cloud_debug";
constexpr const char *kNameServers = "/tmp/curlDNSFile";
constexpr const char *kEndpoint = "/tmp/app/cloud_tmp/KDUMPS_file";
constexpr const char *kTurn = "/tmp/cloudwtpflag";
constexpr const char *kUpgraded = "/tmp/upgrade_finish";

// In the input: an empty argument.
constexpr const char *kEmpty = "''";

// The reply after the last one of the input.
constexpr const char *kSuccess = R"({"message":"OK","upload_url":"https://up.example.com/1"})";

// A dump without content is sent too.
std::string original(const Dump &dump) {
    return dump.source == CURRENT_CONFIG "cloud_watchdog.log" ? "" : "the dump " + dump.source;
}

constexpr const char *kFolders[] = {"/tmp", "/tmp/app/cloud_tmp", "/mnt/data/iss_config",
                                    "/mnt/data/iss_config/current_config", "/run/device"};

int console = -1;
int reboots = 0;
unsigned slept = 0;
bool copies_fail = false;

void copy_file(const std::string &from, const std::string &to) {
    if (!copies_fail && fuzz::exists(from.c_str())) {
        fuzz::write_file(to.c_str(), world::read_file(from));
    }
}

// Does what a shell would do for the staging commands; nothing for others.
int run_command(const char *command) {
    const std::string_view text(command);
    if (text == "reboot;") {
        ++reboots;
        return 0;
    }
    if (text == "tar cvf " ARCHIVE " /mnt/data/iss_config/current_config") {
        if (!copies_fail) {
            fuzz::write_file(ARCHIVE, "an archive");
        }
        return 0;
    }
    for (const Dump &dump : all_dumps()) {
        const std::string paths = dump.source + " " + dump.staged;
        if (text == "cp " + paths || text == "cp -f " + paths) {
            copy_file(dump.source, dump.staged);
            return 0;
        }
    }
    REQUIRE(fuzz::begins_with(text, "cp -f " CURRENT_CONFIG));
    return 0;
}

// Not rename(): the files are on different file systems.
void move_file(const std::string &from, const std::string &to) {
    if (fuzz::exists(from.c_str())) {
        fuzz::write_file(to.c_str(), world::read_file(from));
        unlink(from.c_str());
    }
}

std::string aside(const Dump &dump) {
    return "/run/world" + dump.source.substr(std::strlen("/tmp"));
}

// Without a URL an upload is retried without end. Removing its file ends it: a copy for good, a
// dump until the run has ended.
void take_uploads_away() {
    for (const Dump &dump : all_dumps()) {
        if (!dump.staged.empty()) {
            unlink(dump.staged.c_str());
        } else {
            move_file(dump.source, aside(dump));
        }
    }
}

void bring_dumps_back() {
    for (const Dump &dump : all_dumps()) {
        if (dump.staged.empty()) {
            move_file(aside(dump), dump.source);
        }
    }
}

unsigned sleep_for(unsigned seconds) {
    constexpr unsigned kPatience = 2000;  // more than the longest input needs
    slept += seconds;
    if (slept > kPatience) {
        take_uploads_away();
    }
    return 0;
}

std::set<std::string> all_files() {
    std::set<std::string> files;
    for (const char *folder : kFolders) {
        for (const auto &entry : std::filesystem::directory_iterator(folder)) {
            if (!entry.is_directory()) {
                files.insert(entry.path().string());
            }
        }
    }
    return files;
}

// State letters: 0 to 8 leave out a dump, "s" has earlier staged copies, "c" lets copies fail, "m"
// has every marker, "u" a finished upgrade, "t" a turn file.
void arrange(std::string_view state) {
    for (const std::string &path : all_files()) {
        unlink(path.c_str());
    }
    const auto has = [&](char letter) { return state.find(letter) != std::string_view::npos; };
    char letter = '0';
    for (const Dump &dump : all_dumps()) {
        if (!has(letter++)) {
            fuzz::write_file(dump.source.c_str(), original(dump));
        }
        if (has('s') && !dump.staged.empty()) {
            fuzz::write_file(dump.staged.c_str(), "an earlier one");
        }
    }
    copies_fail = has('c');
    if (has('u')) {
        fuzz::write_file(kUpgraded, "");
    }
    if (has('t')) {
        fuzz::write_file(kTurn, "cloud");
    }
    if (has('m')) {
        for (const world::Kind &kind : world::kinds()) {
            fuzz::write_file(kind.marker.c_str(), "");
        }
    }
}

void write_line(const char *path, std::string_view line) {
    if (!line.empty()) {
        fuzz::write_file(path, line);
    }
}

void forget_earlier_runs() {
    g_console_debug = 0;
    g_detect_dns = 0;
    std::memset(KDUMPS_url, 0, sizeof KDUMPS_url);
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    reboots = 0;
    slept = 0;
}

bool uploaded(std::string_view content, bool answered_200) {
    const std::vector<fuzz::Request> &all = fuzz::requests();
    return std::any_of(all.begin(), all.end(), [&](const fuzz::Request &request) {
        return request.method == "PUT" && request.code == 0 && request.body == content &&
               (!answered_200 || request.status == 200);
    });
}

// The two kinds without a copy lose their dump after any completed transfer, the others only after
// the cloud has accepted it. If copying fails over an earlier copy, that copy is uploaded in place
// of the dump: a limit of the design.
void check_dump(const Dump &dump) {
    if (fuzz::exists(dump.source.c_str())) {
        REQUIRE(world::read_file(dump.source) == original(dump));
        return;
    }
    const bool earlier_went = copies_fail && uploaded("an earlier one", true);
    REQUIRE(earlier_went || uploaded(original(dump), !dump.staged.empty()));
}

void check_files(const std::set<std::string> &before, const std::set<std::string> &after) {
    std::set<std::string> may_come = {kSwitch};
    for (const world::Kind &kind : world::kinds()) {
        may_come.insert(kind.sends_archive ? kind.copied : "");
        for (const Dump &dump : kind.dumps) {
            may_come.insert(dump.staged);
        }
    }
    for (const std::string &path : after) {
        REQUIRE(before.count(path) != 0 || may_come.count(path) != 0);
    }
    for (const std::string &path : before) {
        const bool may_go = may_come.count(path) != 0 ||
                            std::any_of(all_dumps().begin(), all_dumps().end(),
                                        [&](const Dump &dump) { return path == dump.source; });
        REQUIRE(after.count(path) != 0 || (may_go && path != kSwitch));
    }
}

// Console output begins with a time stamp.
void check_console() {
    char text[65536];
    const ssize_t got = read(console, text, sizeof text);
    REQUIRE(got <= 0 || (text[0] == '[' && text[25] == ']'));
    REQUIRE(got <= 0 || g_console_debug != 0);
    while (read(console, text, sizeof text) > 0) {
    }
}

void begin() {
    calls::answer<std::system>() = run_command;
    calls::answer<::sleep>() = sleep_for;
    console = open("/dev/console", O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    REQUIRE(console >= 0);
}

void try_input(fuzz::Input input) {
    const std::unique_ptr<char[]> kind = fuzz::c_text(input.line());
    const std::unique_ptr<char[]> argument = fuzz::c_text(input.line());
    forget_earlier_runs();
    arrange(input.line());
    write_line(kEndpoint, input.line());
    write_line(kNameServers, input.line());
    write_line(kSwitch, input.line());
    write_line(kDebug, input.line());
    const std::set<std::string> before = all_files();
    fuzz::answer_with(input, kSuccess);
    char name[] = "kdump";
    char *arguments[] = {name, kind.get(), argument.get(), nullptr};
    int count = 3;
    while (count > 1 && *arguments[count - 1] == '\0') {
        arguments[--count] = nullptr;
    }
    if (count == 3 && std::strcmp(arguments[2], kEmpty) == 0) {
        *arguments[2] = '\0';
    }
    REQUIRE(run_program(count, arguments) == 0);
    bring_dumps_back();
    check_files(before, all_files());
    for (const Dump &dump : all_dumps()) {
        if (before.count(dump.source) != 0) {
            check_dump(dump);
        }
    }
    REQUIRE(reboots == 0 || (reboots == 1 && fuzz::exists(kUpgraded)));
    REQUIRE(slept % 10 == 0);
    check_console();
    std::free(g_upload_url);  // after failed requests only the program's end frees it
    g_upload_url = nullptr;
}

}  // namespace

const fuzz::Target fuzz::target = {try_input, begin};
