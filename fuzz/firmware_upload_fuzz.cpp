// Any marker of a firmware upload, and any status of the process it names. The status is that of
// process 1; no signal is sent.
// Input, in blocks: the marker's content, the status; a third block, if not empty, makes signals
// fail.
#include <sys/mount.h>
#include <sys/stat.h>

#include <csignal>

#include "device/firmware_upload_watch.h"
#include "fuzz.h"
#include "testing/calls.h"

namespace {

constexpr const char *kMarker = "/tmp/Firmware_uploading.txt";
constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
constexpr const char *kStatus = "/proc/1/status";

int signals = 0;
bool signals_fail = false;

int send_signal(int pid, int number) {
    ++signals;
    REQUIRE(pid > 0 && number == SIGKILL);
    return signals_fail ? -1 : 0;
}

void check(uint32_t result, std::string_view marker) {
    const bool has_marker = fuzz::exists(kMarker);
    const bool has_progress = fuzz::exists(kProgress);
    const std::string_view line = marker.substr(0, marker.find('\n'));
    REQUIRE(result <= 2);
    REQUIRE(result == 0 || has_marker);
    REQUIRE(has_progress || !has_marker || result == 2);
    REQUIRE(has_marker || !has_progress);
    REQUIRE(result != 2 || (!has_progress && fuzz::contains(line, "Uploading by ")));
    REQUIRE(result != 1 || fuzz::contains(line, "Uploading by data.cgi pid:"));
    if (signals != 0) {
        REQUIRE(signals == 1 && fuzz::contains(line, "[port: 80]"));
        REQUIRE(result == (signals_fail ? 1u : 0u) && has_marker == signals_fail);
    }
}

void begin() {
    calls::answer<::kill>() = send_signal;
    REQUIRE(mkdir("/tmp/cgi", 0755) == 0);
    REQUIRE(mount("tmpfs", "/proc/1", "tmpfs", 0, nullptr) == 0);
}

void try_input(fuzz::Input input) {
    const std::string_view marker = input.block();
    fuzz::write_file(kMarker, marker);
    fuzz::write_file(kProgress, "50");
    fuzz::write_file(kStatus, input.block());
    signals = 0;
    signals_fail = !input.empty();
    check(SN_Check_FW_upload_status(), marker);
}

}  // namespace

const fuzz::Target fuzz::target = {try_input, begin};
