// Device services: data that cannot be read counts as missing, and outputs stay untouched.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <thread>
#include <utility>

#include "deployment.h"
#include "device/cloud_time.h"
#include "device/connection_fail_log.h"
#include "device/device_api.h"
#include "device/firmware_upload_watch.h"
#include "device/led.h"
#include "device/system_status.h"
#include "operation.h"
#include "servers.h"
#include "state/device_identity.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

const std::string kTimeFile = kStatus + "conn_fail_log_time.txt";
constexpr const char *kUploadMarker = "/tmp/Firmware_uploading.txt";
constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
constexpr const char *kBlinking = "/tmp/cloud_blinking";

int32_t g_seconds;
MemInfo g_memory;
pid_t g_uploader;

std::string seconds() { return result() + std::to_string(g_seconds); }

// ---- Status probes, time, device API ----

void prepare_mac_addr() {
    std::strcpy(sys_mac_addr, "old");
    std::strcpy(sys_mac_addr_compact, "old");
}

std::string mac_addr_outcome() {
    const std::string outcome = result() + sys_mac_addr + ", " + sys_mac_addr_compact;
    sys_mac_addr[0] = sys_mac_addr_compact[0] = '\0';
    return outcome;
}

std::string host_outcome() {
    without_file(kSettings + "tillet_site");
    return result_and_text();
}

Operations status_rows() {
    const std::string devices = "." CLOUD_BASE_DOMAIN "/v1/devices/S1";
    return {
        {"sn_get_mac_addr",
         prepare_mac_addr,
         CALL(sn_get_mac_addr()),
         mac_addr_outcome,
         {"0, 88:dc:96:01:02:03, 88dc96010203", "-1, old, old"},
         Reach::kNetwork},
        {"sn_get_mem_info",
         [] { g_memory = {}; },
         CALL(sn_get_mem_info(&g_memory)),
         [] { return result() + (g_memory.total_kb > g_memory.used_kb ? "figures" : "untouched"); },
         {"1, figures", "0, untouched"}},
        {"sn_get_sys_up_time",
         nothing,
         CALL(sn_get_sys_up_time(&g_seconds)),
         seconds,
         {"0, 86400", "0, -2"},
         Reach::kNetwork},
        {"api_tillet_host_get",
         [] { world::write_file(kSettings + "tillet_site", "staging"); },
         CALL(api_tillet_host_get(g_text, 1)),
         host_outcome,
         {"0, https://tillet-jp.staging" + devices, "0, https://tillet-jp.production" + devices,
          "-1, "},
         Reach::kNetwork},
        {"api_get_time",
         nothing,
         CALL(api_get_time("https", kTimeHost)),
         [] { return result() + content_of(kLocalChange); },
         {"-1, 'PATCH /api/system/settings/time {\"manualTime\":\"2026-11-20T21:35:07\"}'",
          "-1, none"},
         Reach::kNetworkFromCold},
    };
}

// ---- Connection-failure log ----

void begun_long_ago() {
    world::write_file(kTimeFile, "7");
    g_seconds = -9;
}

std::string outage_outcome() {
    const char *const asked = world::exists(kLocalChange) ? ", asked" : ", not asked";
    const uint32_t flag = std::exchange(conn_fail_logged_60m, 0);
    return result() + taken(kTimeFile) + asked + ", flag " + std::to_string(flag);
}

Operations outage_rows() {
    return {
        {"api_conn_fail_log_time_set, begins",
         begun_long_ago,
         CALL(api_conn_fail_log_time_set(1)),
         outage_outcome,
         {"0, '85900', not asked, flag 0", "0, '0', not asked, flag 0",
          "-1, '7', not asked, flag 0"},
         Reach::kNetwork},
        {"api_conn_fail_log_time_set, ends",
         begun_long_ago,
         CALL(api_conn_fail_log_time_set(0)),
         outage_outcome,
         {"0, none, not asked, flag 0"}},
        {"api_conn_fail_log_time_get",
         begun_long_ago,
         CALL(api_conn_fail_log_time_get(&g_seconds)),
         [] { return std::to_string(g_seconds) + ", " + outage_outcome(); },
         {"7, 0, '7', not asked, flag 0", "-9, -1, '7', not asked, flag 0"}},
        // Every doubt allows.
        {"api_cloud_fail_log_check, forbidden",
         [] {
             begun_long_ago();
             world::write_file(kNoFailLogs, "");
         },
         CALL(api_cloud_fail_log_check()),
         outage_outcome,
         {"-1, '7', not asked, flag 0", "0, '7', not asked, flag 0"},
         Reach::kNetwork},
        // An outage whose beginning cannot be read begins anew.
        {"api_cloud_fail_log",
         begun_long_ago,
         CALL(api_cloud_fail_log()),
         outage_outcome,
         {"0, '7', asked, flag 1", "0, '7', not asked, flag 1", "0, '7', not asked, flag 0",
          "0, '85900', not asked, flag 0"},
         Reach::kNetwork},
    };
}

// ---- LED and registration flag ----

Operation led_row(uint32_t mode, const char *situation, const std::string &marker,
                  const std::string &body) {
    const std::string sent =
        "'PATCH /api/system/settings/ledblink {\"systemLED\":\"" + body + "\"}'";
    std::vector<std::string> allowed = {"0, " + marker + ", " + sent, "0, " + marker + ", none"};
    if (mode == 1)
        allowed.push_back("-1, none, none");
    return {std::string("api_system_led_blink, ") + situation,
            [=] {
                if (mode != 1)
                    world::write_file(kBlinking, "1");
            },
            CALL(api_system_led_blink(mode)),
            [] { return result() + taken(kBlinking) + ", " + content_of(kLocalChange); },
            allowed,
            Reach::kNetwork};
}

Operations led_rows() {
    const std::string flag = kSettings + "zorb_cloud_register_file";
    return {
        led_row(1, "begins", "'1'", "twinkle"),
        led_row(0, "ends", "none", "solidLight"),
        led_row(2, "ends for all", "none", "solidLight"),
        {"api_zorb_cloud_register_set",
         [=] { world::write_file(flag, "old"); },
         CALL(api_zorb_cloud_register_set(-1)),
         [=] { return result() + content_of(flag); },
         {"0, '-1'", "-1, 'old'"}},
    };
}

// ---- Firmware upload watch ----

bool uploader_is_asleep() {
    return world::read_file_if_any("/proc/" + std::to_string(g_uploader) + "/status")
               .find("(sleeping)") != std::string::npos;
}

// Starts a sleeping process with the name of the web interface's upload program.
void start_uploader(const std::string &port) {
    g_uploader = fork();
    if (g_uploader == 0) {
        prctl(PR_SET_NAME, "data.cgi");
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (;;)
            pause();
    }
    const std::string status = "/proc/" + std::to_string(g_uploader) + "/status";
    while (world::read_file(status).find("data.cgi") == std::string::npos || !uploader_is_asleep())
        std::this_thread::yield();
    world::write_file(kUploadMarker, "[port: " + port + "] Uploading by data.cgi pid: " +
                                         std::to_string(g_uploader));
    world::write_file(kProgress, "50");
}

std::string uploader_outcome() {
    const bool marked = world::exists(kUploadMarker);
    const bool ended =
        waitpid(g_uploader, nullptr, WNOHANG) == g_uploader || (!marked && !uploader_is_asleep());
    kill(g_uploader, SIGKILL);
    waitpid(g_uploader, nullptr, 0);
    without_file(kUploadMarker);
    without_file(kProgress);
    return result() + (ended ? "ended" : "alive") + (marked ? ", marked" : ", not marked");
}

std::string progress_outcome() {
    without_file(kUploadMarker);
    return result() + taken(kProgress);
}

Operations upload_watch_rows() {
    const auto watch = CALL(SN_Check_FW_upload_status());
    return {
        {"SN_Check_FW_upload_status, over HTTPS",
         [] { start_uploader("443"); },
         watch,
         uploader_outcome,
         {"1, alive, marked", "0, alive, marked", "0, alive, not marked"}},
        {"SN_Check_FW_upload_status, stalled",
         [] { start_uploader("80"); },
         watch,
         uploader_outcome,
         {"0, ended, not marked", "0, alive, marked", "0, alive, not marked"}},
        {"SN_Check_FW_upload_status, another uploader",
         [] {
             world::write_file(kUploadMarker, "Uploading by hand");
             world::write_file(kProgress, "50");
         },
         watch,
         progress_outcome,
         {"2, none", "0, '50'"}},
    };
}

}  // namespace

Operations device_operations() {
    return joined({status_rows(), outage_rows(), led_rows(), upload_watch_rows()});
}
