#include "device/system_status.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "cloud_http/local_service.h"
#include "log/log.h"
#include "state/device_identity.h"
#include "support/owned.h"

namespace {

constexpr const char *kStatusUrl = LOCAL_SERVICE "system/status";

// The number behind label in line; 0 when the line has none.
uint32_t number_behind(const char *label_found, const char *label) noexcept {
    const char *at = label_found + std::strlen(label);
    at += std::strcspn(at, "0123456789");
    return static_cast<uint32_t>(std::strtoul(at, nullptr, 10));
}

void take_line(const char *line, MemInfo &info) noexcept {
    constexpr const char *kTotal = "MemTotal:";
    constexpr const char *kFree = "MemFree:";
    constexpr const char *kBuffers = "Buffers:";
    constexpr const char *kCached = "Cached:";  // SwapCached too
    if (const char *found = std::strstr(line, kTotal)) {
        info.total_kb = number_behind(found, kTotal);
    } else if ((found = std::strstr(line, kFree)) != nullptr) {
        info.used_kb = info.total_kb - number_behind(found, kFree);
    } else if ((found = std::strstr(line, kBuffers)) != nullptr) {
        info.buffers_cached_kb += number_behind(found, kBuffers);
    } else if ((found = std::strstr(line, kCached)) != nullptr) {
        info.buffers_cached_kb += number_behind(found, kCached);
    }
}

}  // namespace

int sn_get_mac_addr() noexcept {
    const LocalPayload status = read_local_payload(kStatusUrl, "systemInfo", 1455);
    if (status.object == nullptr) {
        return -1;
    }
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
    int32_t up_time = -1;
    const LocalPayload status = read_local_payload(kStatusUrl, "systemInfo", 1588);
    if (status.object == nullptr) {
        cloud_log("\n\n%s %d %s\n\n\n", __func__, 1590, "(null)");  // no reply text is left to show
        up_time = -2;
    } else {
        int found = 0;
        const int seconds = getJsonIntValueForKey(status.object, "upTime", &found);
        up_time = found != 0 ? seconds : -1;
    }
    if (out != nullptr) {
        *out = up_time;
    }
    return 0;
}
