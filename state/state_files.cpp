#include "state/state_files.h"

#include <cstdio>
#include <cstring>

#include "config/deployment.h"
#include "state/one_value_file.h"
#include "support/fixed_text.h"
#include "support/owned.h"

#define SETTINGS "/mnt/data/iss_config/current_config/"
#define STATUS "/tmp/app/cloud_tmp/"

namespace {

// The deployment's host names are settings of any length; the callers' buffers are not.
using TextBuffer = FixedText<256>;

constexpr uint32_t kDone = 0;
constexpr uint32_t kRefused = 1;

constexpr const char *kCloudDebug = SETTINGS "cloud_debug";
constexpr const char *kRenewDhcp = SETTINGS "cloud_RenewDHCP";
constexpr const char *kDetectDns = SETTINGS "cloud_DetectDNS";
constexpr const char *kEtcd = SETTINGS "cloud_etcd";
constexpr const char *kConfigNumber = SETTINGS "cloud_config_number_file";
constexpr const char *kEtcdUrl = SETTINGS "ETCD_file";
constexpr const char *kFwUpgradeStatus = STATUS "cloud_fw_upgrade_status_file";
constexpr const char *kFwUpgradeFlag = STATUS "cloud_fw_upgrade_flag_file";
constexpr const char *kCheckinHost = STATUS "checkin_file";
constexpr const char *kCheckinPath = STATUS "checkinStr_file";
constexpr const char *kCheckinInterval = STATUS "checkin_interval_file";
constexpr const char *kCheckinStatus = STATUS "checkinStatus";
constexpr const char *kFallbackHost = STATUS "fallback_file";
constexpr const char *kKeeperHost = STATUS "connectionkeeperhost_file";
constexpr const char *kKeeperPath = STATUS "connectionkeeperpath_file";
constexpr const char *kQuentaServer = STATUS "quenta_server_file";
constexpr const char *kQuentaPort = STATUS "quenta_server_port_file";
constexpr const char *kSorvaneList = STATUS "sorvane_file";
constexpr const char *kConnectionError = STATUS "server_connection_err";

// A null fallback leaves the buffer untouched.
uint32_t get_text(const char *path, char *value, const char *fallback) noexcept {
    if (value == nullptr) {
        return kRefused;
    }
    if (!read_value(path, "%255s", value) && fallback != nullptr) {
        TextBuffer text;
        text.format("%s", fallback);
        std::memcpy(value, text.c_str(), text.length() + 1);
    }
    return kDone;
}

uint32_t set_text(const char *path, const char *value) noexcept {
    if (value == nullptr) {
        return kRefused;
    }
    TextBuffer text;
    text.format("%s", value);
    return write_value(path, "%s", text.c_str()) ? kDone : kRefused;
}

template <class Number>
uint32_t get_number(const char *path, const char *conversion, Number *value,
                    Number fallback) noexcept {
    if (value != nullptr && !read_value(path, conversion, value)) {
        *value = fallback;
    }
    return kDone;
}

// The readable values end below limit; the others read as beyond_limit.
uint32_t get_limited(const char *path, uint32_t *value, uint32_t fallback, uint32_t limit,
                     uint32_t beyond_limit) noexcept {
    get_number(path, "%u", value, fallback);
    if (value != nullptr && *value >= limit) {
        *value = beyond_limit;
    }
    return kDone;
}

// A switch that comes into being, switched on, the first time it is read.
uint32_t get_lasting_switch(const char *path, uint32_t *value) noexcept {
    uint32_t current = value != nullptr ? *value : 1;
    if (!read_value(path, "%u", &current)) {
        current = 1;
        write_value(path, "%u", current);
    }
    if (value != nullptr) {
        *value = current >= 2 ? 1 : current;
    }
    return kDone;
}

}  // namespace

uint32_t api_cloud_debug_get(uint32_t *value) noexcept {
    return get_limited(kCloudDebug, value, 0, 3, 0);
}

uint32_t api_cloud_RenewDHCP_get(uint32_t *value) noexcept {
    return get_lasting_switch(kRenewDhcp, value);
}

uint32_t api_cloud_DetectDNS_get(uint32_t *value) noexcept {
    return get_lasting_switch(kDetectDns, value);
}

uint32_t api_cloud_etcd_get(uint32_t *value) noexcept { return get_limited(kEtcd, value, 1, 1, 1); }

uint32_t api_cloud_fw_upgrade_status_get(uint32_t *value) noexcept {
    get_number<uint32_t>(kFwUpgradeStatus, "%u", value, 0);
    return value != nullptr ? *value : 0;
}

uint32_t api_cloud_fw_upgrade_flag_get(int32_t *value) noexcept {
    return get_number<int32_t>(kFwUpgradeFlag, "%d", value, 0);
}

uint32_t api_cloud_config_number_set(const char *value) noexcept {
    return set_text(kConfigNumber, value);
}

uint32_t api_cloud_config_number_get(char *value) noexcept {
    get_text(kConfigNumber, value, nullptr);
    return kDone;
}

uint32_t api_checkin_host_get(char *value) noexcept {
    return get_text(kCheckinHost, value, CLOUD_CHECKIN_HOST);
}

uint32_t api_checkin_host_set(const char *value) noexcept { return set_text(kCheckinHost, value); }

uint32_t api_checkin_path_get(char *value) noexcept {
    return get_text(kCheckinPath, value, "/checkin");
}

uint32_t api_checkin_path_set(const char *value) noexcept { return set_text(kCheckinPath, value); }

uint32_t api_checkin_interval_get(int32_t *value) noexcept {
    return get_number<int32_t>(kCheckinInterval, "%d", value, 300);
}

uint32_t api_checkin_interval_set(int32_t value) noexcept {
    return write_value(kCheckinInterval, "%d", value) ? kDone : kRefused;
}

uint32_t api_checkin_status_get(char *value) noexcept {
    return get_text(kCheckinStatus, value, nullptr);
}

uint32_t api_checkin_status_set(const char *value) noexcept {
    return set_text(kCheckinStatus, value);
}

uint32_t api_fallback_host_get(char *value) noexcept {
    return get_text(kFallbackHost, value, CLOUD_CHECKIN_HOST);
}

uint32_t api_fallback_host_set(const char *value) noexcept {
    return set_text(kFallbackHost, value);
}

uint32_t api_connection_keeper_host_get(char *value) noexcept {
    return get_text(kKeeperHost, value, CLOUD_CONNECTION_KEEPER_HOST);
}

uint32_t api_connection_keeper_host_set(const char *value) noexcept {
    return set_text(kKeeperHost, value);
}

uint32_t api_connection_keeper_path_get(char *value) noexcept {
    return get_text(kKeeperPath, value, "/device/register");
}

uint32_t api_connection_keeper_path_set(const char *value) noexcept {
    return set_text(kKeeperPath, value);
}

uint32_t api_quenta_server_get(char *value) noexcept {
    return get_text(kQuentaServer, value, CLOUD_QUENTA_HOST);
}

uint32_t api_quenta_server_set(const char *value) noexcept {
    return set_text(kQuentaServer, value);
}

uint32_t api_quenta_server_port_get(uint32_t *value) noexcept {
    return value != nullptr ? get_number<uint32_t>(kQuentaPort, "%u", value, 443) : kRefused;
}

uint32_t api_quenta_server_port_set(uint32_t value) noexcept {
    return write_value(kQuentaPort, "%u", value) ? kDone : kRefused;
}

uint32_t api_sorvane_list_set(char (*entries)[256], int count, const char *selected) noexcept {
    const OwnedFile file(std::fopen(kSorvaneList, "w"));
    if (!file) {
        return kRefused;
    }
    for (int i = 0; entries != nullptr && i < count; ++i) {
        TextBuffer entry;  // a slot without a terminator ends with the slot
        entry.format("%.*s", static_cast<int>(TextBuffer::size()), entries[i]);
        const bool marked = selected != nullptr && std::strcmp(entry.c_str(), selected) == 0;
        std::fprintf(file.get(), "%s%s\n", marked ? "*" : "", entry.c_str());
    }
    return kDone;
}

uint32_t api_server_connection_err_set(const char *text, int code) noexcept {
    if (text != nullptr) {
        TextBuffer error;
        error.format("%s(%d)", text, code);
        write_value(kConnectionError, "%s", error.c_str());
    }
    return kDone;
}

uint32_t api_etcd_url_set(const char *value) noexcept {
    set_text(kEtcdUrl, value);
    return kDone;
}

uint32_t api_etcd_url_get(char *value) noexcept {
    return get_text(kEtcdUrl, value, "https://" CLOUD_CATALOGUE_HOST "/v1/kv/services?recurse=1");
}
