#include "state/state_files.h"

#include <cstdio>
#include <cstring>

#include "base/fixed_text.h"
#include "base/owned.h"
#include "deployment.h"
#include "state/one_value_file.h"

using namespace cloudagent;

#define SETTINGS "/mnt/data/iss_config/current_config/"
#define STATUS "/tmp/app/cloud_tmp/"
#define CONFIG_NUMBER SETTINGS "cloud_config_number_file"
#define CHECKIN_INTERVAL STATUS "checkin_interval_file"
#define QUENTA_PORT STATUS "quenta_server_port_file"
#define ETCD_URL SETTINGS "ETCD_file"

namespace {

// Callers' buffers have 256 bytes; the deployment's host names may be longer.
using TextBuffer = FixedText<256>;

constexpr uint32_t kDone = 0;
constexpr uint32_t kRefused = 1;

uint32_t get_text(const char *path, char *value, const char *fallback) noexcept {
    if (value == nullptr) {
        return kRefused;
    }
    if (read_word(path, value, TextBuffer::size()) == FileValue::kNoFile && fallback != nullptr) {
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
uint32_t get_number(const char *path, Number *value, Number fallback) noexcept {
    if (value != nullptr && read_number(path, value) == FileValue::kNoFile) {
        *value = fallback;
    }
    return kDone;
}

// A value of limit or more reads as beyond_limit.
uint32_t get_limited(const char *path, uint32_t *value, uint32_t fallback, uint32_t limit,
                     uint32_t beyond_limit) noexcept {
    get_number(path, value, fallback);
    if (value != nullptr && *value >= limit) {
        *value = beyond_limit;
    }
    return kDone;
}

// A switch whose missing file is created, switched on.
uint32_t get_lasting_switch(const char *path, uint32_t *value) noexcept {
    uint32_t current = value != nullptr ? *value : 1;
    if (read_number(path, &current) == FileValue::kNoFile) {
        current = 1;
        create_number(path, current);
    }
    if (value != nullptr) {
        *value = current >= 2 ? 1 : current;
    }
    return kDone;
}

}  // namespace

// One accessor or pair per row. A null fallback leaves the caller's buffer untouched.
#define TEXT_GETTER(getter, path, fallback) \
    uint32_t getter(char *value) noexcept { return get_text(path, value, fallback); }
#define TEXT_SETTER(setter, path) \
    uint32_t setter(const char *value) noexcept { return set_text(path, value); }
#define TEXT_FILE(getter, setter, path, fallback) \
    TEXT_GETTER(getter, path, fallback)           \
    TEXT_SETTER(setter, path)
// NOLINTBEGIN(bugprone-macro-parentheses): a type takes none
#define NUMBER_GETTER(getter, Number, path, fallback) \
    uint32_t getter(Number *value) noexcept { return get_number<Number>(path, value, fallback); }
// NOLINTEND(bugprone-macro-parentheses)
#define NUMBER_SETTER(setter, Number, conversion, path)                 \
    uint32_t setter(Number value) noexcept {                            \
        return write_value(path, conversion, value) ? kDone : kRefused; \
    }
#define LIMITED_GETTER(getter, path, fallback, limit, beyond_limit)     \
    uint32_t getter(uint32_t *value) noexcept {                         \
        return get_limited(path, value, fallback, limit, beyond_limit); \
    }
#define LASTING_SWITCH_GETTER(getter, path) \
    uint32_t getter(uint32_t *value) noexcept { return get_lasting_switch(path, value); }

LIMITED_GETTER(api_cloud_debug_get, SETTINGS "cloud_debug", 0, 3, 0)
LASTING_SWITCH_GETTER(api_cloud_RenewDHCP_get, SETTINGS "cloud_RenewDHCP")
LASTING_SWITCH_GETTER(api_cloud_DetectDNS_get, SETTINGS "cloud_DetectDNS")
LIMITED_GETTER(api_cloud_etcd_get, SETTINGS "cloud_etcd", 1, 1, 1)
NUMBER_GETTER(api_cloud_fw_upgrade_flag_get, int32_t, STATUS "cloud_fw_upgrade_flag_file", 0)
TEXT_SETTER(api_cloud_config_number_set, CONFIG_NUMBER)
TEXT_FILE(api_checkin_host_get, api_checkin_host_set, STATUS "checkin_file", CLOUD_CHECKIN_HOST)
TEXT_FILE(api_checkin_path_get, api_checkin_path_set, STATUS "checkinStr_file", "/checkin")
NUMBER_GETTER(api_checkin_interval_get, int32_t, CHECKIN_INTERVAL, 300)
NUMBER_SETTER(api_checkin_interval_set, int32_t, "%d", CHECKIN_INTERVAL)
TEXT_FILE(api_checkin_status_get, api_checkin_status_set, STATUS "checkinStatus", nullptr)
TEXT_FILE(api_fallback_host_get, api_fallback_host_set, STATUS "fallback_file", CLOUD_CHECKIN_HOST)
TEXT_FILE(api_connection_keeper_host_get, api_connection_keeper_host_set,
          STATUS "connectionkeeperhost_file", CLOUD_CONNECTION_KEEPER_HOST)
TEXT_FILE(api_connection_keeper_path_get, api_connection_keeper_path_set,
          STATUS "connectionkeeperpath_file", "/device/register")
TEXT_FILE(api_quenta_server_get, api_quenta_server_set, STATUS "quenta_server_file",
          CLOUD_QUENTA_HOST)
NUMBER_SETTER(api_quenta_server_port_set, uint32_t, "%u", QUENTA_PORT)
TEXT_GETTER(api_etcd_url_get, ETCD_URL, "https://" CLOUD_CATALOGUE_HOST "/v1/kv/services?recurse=1")

// The other accessors: their result or their file differs from the usual.

uint32_t api_cloud_fw_upgrade_status_get(uint32_t *value) noexcept {
    get_number<uint32_t>(STATUS "cloud_fw_upgrade_status_file", value, 0);
    return value != nullptr ? *value : 0;
}

uint32_t api_cloud_config_number_get(char *value) noexcept {
    get_text(CONFIG_NUMBER, value, nullptr);
    return kDone;
}

uint32_t api_quenta_server_port_get(uint32_t *value) noexcept {
    return value != nullptr ? get_number<uint32_t>(QUENTA_PORT, value, 443) : kRefused;
}

uint32_t api_etcd_url_set(const char *value) noexcept {
    set_text(ETCD_URL, value);
    return kDone;
}

uint32_t api_sorvane_list_set(char (*entries)[256], int count, const char *selected) noexcept {
    const OwnedFile file(std::fopen(STATUS "sorvane_file", "w"));
    if (!file) {
        return kRefused;
    }
    for (int i = 0; entries != nullptr && i < count; ++i) {
        TextBuffer entry;  // a slot may lack a terminator
        entry.format("%.*s", static_cast<int>(TextBuffer::size()), entries[i]);
        const bool marked = selected != nullptr && std::strcmp(entry.c_str(), selected) == 0;
        (void)std::fprintf(file.get(), "%s%s\n", marked ? "*" : "", entry.c_str());
    }
    (void)store(file.get());
    return kDone;
}

uint32_t api_server_connection_err_set(const char *text, int code) noexcept {
    if (text != nullptr) {
        FixedText<16> bracketed;
        bracketed.format("(%d)", code);
        const auto room = static_cast<int>(TextBuffer::size() - 1 - bracketed.length());
        TextBuffer error;
        error.format("%.*s%s", room, text, bracketed.c_str());
        write_value(STATUS "server_connection_err", "%s", error.c_str());
    }
    return kDone;
}
