#include "device/connection_fail_log.h"

#include <unistd.h>

#include <cstdio>

#include "base/owned.h"
#include "cloud_http/curl_http.h"
#include "cloud_http/local_service.h"
#include "device/system_status.h"
#include "log/log.h"
#include "state/one_value_file.h"

using namespace cloudagent;

uint32_t conn_fail_logged_30m = 0;
uint32_t conn_fail_logged_60m = 0;

namespace {

constexpr const char *kTimeFile = "/tmp/app/cloud_tmp/conn_fail_log_time.txt";
constexpr const char *kStopFile = "/mnt/data/iss_config/cloud_conn_fail_log.stop";
constexpr const char *kFailLogUrl = LOCAL_SERVICE "cloud_fail_log";

// Seconds. An outage counts as older than its first call.
constexpr int32_t kHeadStart = 500;
constexpr int64_t kHalfHour = 1801;
constexpr int64_t kHour = 3601;

void request_log(uint32_t &logged) noexcept {
    if (logged == 0) {
        http_post(kFailLogUrl, "", nullptr);
        logged = 1;  // a failed request is not repeated
    }
}

}  // namespace

int api_conn_fail_log_time_set(uint32_t start) noexcept {
    if (start == 0) {
        unlink(kTimeFile);
        conn_fail_logged_30m = 0;
        conn_fail_logged_60m = 0;
        return 0;
    }
    // Without the file the local service is not asked.
    const OwnedFile file(std::fopen(kTimeFile, "w"));
    if (!file) {
        return -1;
    }
    int32_t up_time = 0;
    sn_get_sys_up_time(&up_time);
    (void)std::fprintf(file.get(), "%d", up_time > kHeadStart ? up_time - kHeadStart : 0);
    (void)store(file.get());
    return 0;
}

int api_conn_fail_log_time_get(int32_t *out) noexcept {
    int32_t unused = 0;
    return read_number(kTimeFile, out != nullptr ? out : &unused) != FileValue::kNoFile ? 0 : -1;
}

int api_cloud_fail_log_check() noexcept {
    const LocalPayload check = read_local_payload(kFailLogUrl, "conn_fail_chk", 1769);
    int found = 0;
    const int create = getJsonBoolValueForKey(check.object, "createLog", &found);
    return found != 0 && create == 0 ? -1 : 0;
}

int api_cloud_fail_log() noexcept {
    if (access(kStopFile, R_OK) == 0 || api_cloud_fail_log_check() == -1) {
        return 0;
    }
    int32_t start = 0;
    if (api_conn_fail_log_time_get(&start) != 0) {
        api_conn_fail_log_time_set(1);
        return 0;
    }
    int32_t now = 0;
    sn_get_sys_up_time(&now);
    cloud_log("%s %d current_check_time = %d\n", __func__, 1819, now);
    const int64_t elapsed = static_cast<int64_t>(now) - start;
    if (elapsed >= kHour) {
        request_log(conn_fail_logged_60m);
    } else if (elapsed >= kHalfHour) {
        request_log(conn_fail_logged_30m);
    }
    return 0;
}
