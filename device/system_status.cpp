#include "device/system_status.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/owned.h"
#include "cloud_http/local_service.h"
#include "log/log.h"
#include "state/device_identity.h"

using namespace cloudagent;

namespace {

constexpr const char *kStatusUrl = LOCAL_SERVICE "system/status";

// Stores the number behind label, 0 without any. False when line lacks label.
bool take_number(const char *line, const char *label, uint32_t *number) noexcept {
    const char *at = std::strstr(line, label);
    if (at == nullptr) {
        return false;
    }
    at += std::strlen(label);
    at += std::strcspn(at, "0123456789");
    *number = static_cast<uint32_t>(std::strtoul(at, nullptr, 10));
    return true;
}

void take_line(const char *line, MemInfo &info) noexcept {
    uint32_t number = 0;
    if (take_number(line, "MemTotal:", &number)) {
        info.total_kb = number;
    } else if (take_number(line, "MemFree:", &number)) {
        info.used_kb = info.total_kb - number;
    } else if (take_number(line, "Buffers:", &number) || take_number(line, "Cached:", &number)) {
        info.buffers_cached_kb += number;  // SwapCached too
    }
}

}  // namespace

int sn_get_mac_addr() noexcept {
    const LocalPayload status = read_local_payload(kStatusUrl, "systemInfo", 1455);
    const char *const mac = getJsonStringValueForKey(status.object, "macAddr");
    if (mac == nullptr) {
        return -1;
    }
    std::memset(sys_mac_addr, 0, sizeof sys_mac_addr);
    std::memset(sys_mac_addr_compact, 0, sizeof sys_mac_addr_compact);
    std::memcpy(sys_mac_addr, mac, strnlen(mac, sizeof sys_mac_addr - 1));
    std::size_t kept = 0;
    for (const char *at = mac; *at != '\0' && kept < sizeof sys_mac_addr_compact - 1; ++at) {
        if (*at != ':') {
            sys_mac_addr_compact[kept++] = *at;
        }
    }
    return 0;
}

int sn_get_mem_info(MemInfo *info) noexcept {
    const OwnedFile report(std::fopen("/proc/meminfo", "r"));
    if (!report) {
        cloud_log("/proc/meminfo can not be opened\n");
        return 0;
    }
    char line[256];
    while (info != nullptr && std::fgets(line, sizeof line, report.get()) != nullptr) {
        take_line(line, *info);
    }
    return 1;
}

int sn_get_sys_up_time(int32_t *out) noexcept {
    const LocalPayload status = read_local_payload(kStatusUrl, "systemInfo", 1588);
    int found = 0;
    int32_t up_time = getJsonIntValueForKey(status.object, "upTime", &found);
    if (status.object == nullptr) {
        cloud_log("\n\n%s %d %s\n\n\n", __func__, 1590, "(null)");  // no reply text is left to show
        up_time = -2;
    } else if (found == 0) {
        up_time = -1;
    }
    if (out != nullptr) {
        *out = up_time;
    }
    return 0;
}
