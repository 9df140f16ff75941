// Device services: what cannot be read counts as not there, and outputs stay untouched.
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <thread>

#include "deployment.h"
#include "device/cloud_time.h"
#include "device/connection_fail_log.h"
#include "device/device_api.h"
#include "device/firmware_upload_watch.h"
#include "device/led.h"
#include "device/system_status.h"
#include "operation.h"
#include "peers.h"
#include "state/device_identity.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

const std::string kTimeFile = kStatus + "conn_fail_log_time.txt";
constexpr const char *kUploadMarker = "/tmp/Firmware_uploading.txt";
constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
constexpr const char *kBlinking = "/tmp/cloud_blinking";

int g_result;
int32_t g_seconds;
char g_url[1024];
MemInfo g_memory;
pid_t g_uploader;

std::string result() { return std::to_string(g_result) + ", "; }

void prepare_peers() { clear_peers(); }

// ---- Status probes, time, device API ----

Operations status_rows() {
    const std::string devices = "." CLOUD_BASE_DOMAIN "/v1/devices/S1";
    return {
        networked(
            "sn_get_mac_addr",
            [] {
                prepare_peers();
                std::strcpy(sys_mac_addr, "old");
                std::strcpy(sys_mac_addr_compact, "old");
            },
            [] { g_result = sn_get_mac_addr(); },
            [] {
                const std::string outcome = result() + sys_mac_addr + ", " + sys_mac_addr_compact;
                sys_mac_addr[0] = sys_mac_addr_compact[0] = '\0';
                return outcome;
            },
            {"0, 88:dc:96:01:02:03, 88dc96010203", "-1, old, old"}),
        alone(
            "sn_get_mem_info", [] { g_memory = {}; }, [] { g_result = sn_get_mem_info(&g_memory); },
            [] {
                return result() + (g_memory.total_kb > g_memory.used_kb ? "figures" : "untouched");
            },
            {"1, figures", "0, untouched"}),
        networked(
            "sn_get_sys_up_time", [] { prepare_peers(); },
            [] { g_result = sn_get_sys_up_time(&g_seconds); },
            [] { return result() + std::to_string(g_seconds); }, {"0, 86400", "0, -2"}),
        networked(
            "api_tillet_host_get",
            [] {
                prepare_peers();
                world::write_file(kSettings + "tillet_site", "staging");
                std::memset(g_url, 0, sizeof g_url);
            },
            [] { g_result = api_tillet_host_get(g_url, 1); },
            [] {
                without_file(kSettings + "tillet_site");
                return result() + g_url;
            },
            {"0, https://tillet-jp.staging" + devices, "0, https://tillet-jp.production" + devices,
             "-1, "}),
        networked_from_cold(
            "api_get_time", [] { prepare_peers(); },
            [] { g_result = api_get_time("https", kTimeHost); },
            [] { return result() + content_of(kLocalChange); },
            {"-1, 'PATCH /api/system/settings/time {\"manualTime\":\"2026-11-20T21:35:07\"}'",
             "-1, none"}),
    };
}

// ---- Connection-failure log ----

std::string outage_outcome() {
    const std::string outcome = result() + content_of(kTimeFile) + ", " +
                                (world::exists(kLocalChange) ? "asked" : "not asked") + ", flag " +
                                std::to_string(conn_fail_logged_60m);
    without_file(kTimeFile);
    conn_fail_logged_60m = 0;
    clear_peers();
    return outcome;
}

Operations outage_rows() {
    const auto begun_long_ago = [] {
        prepare_peers();
        world::write_file(kTimeFile, "7");
    };
    return {
        networked("api_conn_fail_log_time_set, begins", begun_long_ago,
                  [] { g_result = api_conn_fail_log_time_set(1); }, outage_outcome,
                  {"0, '85900', not asked, flag 0", "0, '0', not asked, flag 0",
                   "-1, '7', not asked, flag 0"}),
        alone("api_conn_fail_log_time_set, ends", begun_long_ago,
              [] { g_result = api_conn_fail_log_time_set(0); }, outage_outcome,
              {"0, none, not asked, flag 0"}),
        alone(
            "api_conn_fail_log_time_get",
            [=] {
                begun_long_ago();
                g_seconds = -9;
            },
            [] { g_result = api_conn_fail_log_time_get(&g_seconds); },
            [] { return std::to_string(g_seconds) + ", " + outage_outcome(); },
            {"7, 0, '7', not asked, flag 0", "-9, -1, '7', not asked, flag 0"}),
        // Every doubt allows.
        networked(
            "api_cloud_fail_log_check, forbidden",
            [=] {
                begun_long_ago();
                world::write_file(kNoFailLogs, "");
            },
            [] { g_result = api_cloud_fail_log_check(); }, outage_outcome,
            {"-1, '7', not asked, flag 0", "0, '7', not asked, flag 0"}),
        // An outage whose beginning cannot be read begins anew.
        networked("api_cloud_fail_log", begun_long_ago, [] { g_result = api_cloud_fail_log(); },
                  outage_outcome,
                  {"0, '7', asked, flag 1", "0, '7', not asked, flag 1",
                   "0, '7', not asked, flag 0", "0, '85900', not asked, flag 0"}),
    };
}

// ---- LED and registration flag ----

std::string led_outcome() {
    const std::string outcome = result() + content_of(kBlinking) + ", " + content_of(kLocalChange);
    without_file(kBlinking);
    return outcome;
}

Operation led_row(uint32_t mode, const char *situation, const std::string &marker,
                  const std::string &body) {
    const std::string sent =
        "'PATCH /api/system/settings/ledblink {\"systemLED\":\"" + body + "\"}'";
    std::vector<std::string> allowed = {"0, " + marker + ", " + sent, "0, " + marker + ", none"};
    if (mode == 1)
        allowed.push_back("-1, none, none");
    return {"api_system_led_blink",
            situation,
            Reach::kNetwork,
            [=] {
                prepare_peers();
                if (mode != 1)
                    world::write_file(kBlinking, "1");
            },
            [=] { g_result = api_system_led_blink(mode); },
            led_outcome,
            allowed};
}

Operations led_rows() {
    const std::string flag = kSettings + "zorb_cloud_register_file";
    return {
        led_row(1, "begins", "'1'", "twinkle"),
        led_row(0, "ends", "none", "solidLight"),
        led_row(2, "ends for all", "none", "solidLight"),
        alone(
            "api_zorb_cloud_register_set", [=] { world::write_file(flag, "old"); },
            [] { g_result = api_zorb_cloud_register_set(-1); },
            [=] { return result() + content_of(flag); }, {"0, '-1'", "-1, 'old'"}),
    };
}

// ---- Firmware upload watch ----

// A sleeping process that calls itself as the web interface's upload program does.
void start_uploader(const char *port) {
    int ready[2];
    if (pipe(ready) != 0)
        std::abort();
    g_uploader = fork();
    if (g_uploader == 0) {
        prctl(PR_SET_NAME, "data.cgi");
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (write(ready[1], "", 1) == 1)
            for (;;)
                pause();
        _exit(1);
    }
    char nothing;
    if (read(ready[0], &nothing, 1) != 1)
        std::abort();
    close(ready[0]);
    close(ready[1]);
    // It sleeps once it has said so.
    const std::string status = "/proc/" + std::to_string(g_uploader) + "/status";
    while (world::read_file(status).find("(sleeping)") == std::string::npos)
        std::this_thread::yield();
    world::write_file(kUploadMarker,
                      std::string("[port: ") + port +
                          "] Uploading by data.cgi pid: " + std::to_string(g_uploader));
    world::write_file(kProgress, "50");
}

std::string uploader_outcome() {
    int status = 0;
    const bool ended = waitpid(g_uploader, &status, WNOHANG) == g_uploader ||
                       (kill(g_uploader, 0) == 0 && !world::exists(kUploadMarker) &&
                        world::read_file_if_any("/proc/" + std::to_string(g_uploader) + "/status")
                                .find("(sleeping)") == std::string::npos);
    kill(g_uploader, SIGKILL);
    waitpid(g_uploader, &status, 0);
    std::string outcome = result() + (ended ? "ended" : "alive");
    outcome += world::exists(kUploadMarker) ? ", marked" : ", not marked";
    without_file(kUploadMarker);
    without_file(kProgress);
    return outcome;
}

void watch_upload() { g_result = static_cast<int>(SN_Check_FW_upload_status()); }

Operations upload_watch_rows() {
    return {
        alone("SN_Check_FW_upload_status, over HTTPS", [] { start_uploader("443"); }, watch_upload,
              uploader_outcome, {"1, alive, marked", "0, alive, marked", "0, alive, not marked"}),
        alone("SN_Check_FW_upload_status, stalled", [] { start_uploader("80"); }, watch_upload,
              uploader_outcome,
              {"0, ended, not marked", "0, alive, marked", "0, alive, not marked"}),
        alone(
            "SN_Check_FW_upload_status, another uploader",
            [] {
                world::write_file(kUploadMarker, "Uploading by hand");
                world::write_file(kProgress, "50");
            },
            watch_upload,
            [] {
                const std::string outcome = result() + content_of(kProgress);
                without_file(kUploadMarker);
                without_file(kProgress);
                return outcome;
            },
            {"2, none", "0, '50'"}),
    };
}

}  // namespace

Operations device_operations() {
    return joined({status_rows(), outage_rows(), led_rows(), upload_watch_rows()});
}
