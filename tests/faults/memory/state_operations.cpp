// State files. Without memory to open it, a file counts as missing.
#include <cstring>

#include "deployment.h"
#include "operation.h"
#include "state/credentials.h"
#include "state/device_identity.h"
#include "state/state_files.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

constexpr const char *kMac = "88dc";

// The getter of a file with `content`: its result and value, or those of a missing file.
template <class Result, class Number>
Operation number_getter(const char *function, Result (*get)(Number *), const std::string &path,
                        const char *content, const char *expected, const char *missing) {
    static Number value;
    return {function,
            [=] { world::write_file(path, content); },
            CALL(get(&value)),
            [] { return result() + std::to_string(value); },
            {expected, missing}};
}

// A switch that its getter creates; without memory to read it, it is switched on.
Operation switch_getter(const char *function, uint32_t (*get)(uint32_t *),
                        const std::string &path) {
    static uint32_t value;
    return {function,
            [=] { world::write_file(path, "0"); },
            CALL(get(&value)),
            [=] { return result() + std::to_string(value) + " " + content_of(path); },
            {"0, 0 '0'", "0, 1 '0'", "0, 1 '1'"}};
}

// The getter of a file with "stored" and `suffix`. The buffer of a credential must be empty before.
template <class Result>
Operation text_getter(const char *function, Result (*get)(char *), const std::string &path,
                      const std::string &suffix, const std::string &missing) {
    return {function,
            [=] {
                world::write_file(path, "stored" + suffix);
                std::strcpy(g_text, suffix.empty() ? "untouched" : "");
                std::strcpy(sys_mac_addr_compact, kMac);
            },
            CALL(get(g_text)),
            result_and_text,
            {"0, stored", missing}};
}

// The file holds the new value, or the old one untouched.
Operation setter(const char *function, const std::string &path, std::function<void()> call,
                 const std::string &written, const std::string &refused = "1") {
    return {function,
            [=] { world::write_file(path, "old"); },
            std::move(call),
            [=] { return result() + content_of(path); },
            {"0, '" + written + "'", refused + ", 'old'"}};
}

#define ROW(builder, function, ...) builder(#function, function, __VA_ARGS__)
#define SET(function, path, value, written) setter(#function, path, CALL(function(value)), written)

// A file of one word, with its getter and setter, and the word that stands for a missing file.
#define TEXT_FILE(name, path, missing)                                      \
    ROW(text_getter, name##_get, path, "", std::string("0, ") + (missing)), \
        SET(name##_set, path, "new", "new")

// The same of a text that belongs to this device: without the file, nothing is handed out.
#define CREDENTIAL(name, path) \
    ROW(text_getter, name##_get, path, kMac, "1, "), SET(name##_set, path, "new", "new")

Operations number_rows() {
    return {
        ROW(number_getter, api_cloud_debug_get, kSettings + "cloud_debug", "2", "0, 2", "0, 0"),
        ROW(switch_getter, api_cloud_RenewDHCP_get, kSettings + "cloud_RenewDHCP"),
        ROW(switch_getter, api_cloud_DetectDNS_get, kSettings + "cloud_DetectDNS"),
        ROW(number_getter, api_cloud_etcd_get, kSettings + "cloud_etcd", "0", "0, 0", "0, 1"),
        ROW(number_getter, api_cloud_fw_upgrade_status_get,
            kStatus + "cloud_fw_upgrade_status_file", "7", "7, 7", "0, 0"),
        ROW(number_getter, api_cloud_fw_upgrade_flag_get, kStatus + "cloud_fw_upgrade_flag_file",
            "41", "0, 41", "0, 0"),
        ROW(number_getter, api_checkin_interval_get, kStatus + "checkin_interval_file", "41",
            "0, 41", "0, 300"),
        SET(api_checkin_interval_set, kStatus + "checkin_interval_file", 17, "17"),
        ROW(number_getter, api_quenta_server_port_get, kStatus + "quenta_server_port_file", "8443",
            "0, 8443", "0, 443"),
        SET(api_quenta_server_port_set, kStatus + "quenta_server_port_file", 17, "17"),
        ROW(number_getter, api_omcloud_seqno_get, kStatus + "seqno_file", "41", "0, 41", "1, 1"),
        SET(api_omcloud_seqno_set, kStatus + "seqno_file", 17, "17"),
    };
}

Operations text_rows() {
    static char entries[3][256] = {"red", "green", "blue"};
    const std::string etcd = "https://" CLOUD_CATALOGUE_HOST "/v1/kv/services?recurse=1";
    return {
        TEXT_FILE(api_cloud_config_number, kSettings + "cloud_config_number_file", "untouched"),
        TEXT_FILE(api_checkin_host, kStatus + "checkin_file", CLOUD_CHECKIN_HOST),
        TEXT_FILE(api_checkin_path, kStatus + "checkinStr_file", "/checkin"),
        TEXT_FILE(api_checkin_status, kStatus + "checkinStatus", "untouched"),
        TEXT_FILE(api_fallback_host, kStatus + "fallback_file", CLOUD_CHECKIN_HOST),
        TEXT_FILE(api_connection_keeper_host, kStatus + "connectionkeeperhost_file",
                  CLOUD_CONNECTION_KEEPER_HOST),
        TEXT_FILE(api_connection_keeper_path, kStatus + "connectionkeeperpath_file",
                  "/device/register"),
        TEXT_FILE(api_quenta_server, kStatus + "quenta_server_file", CLOUD_QUENTA_HOST),
        ROW(text_getter, api_etcd_url_get, kSettings + "ETCD_file", "", "0, " + etcd),
        setter("api_etcd_url_set", kSettings + "ETCD_file", CALL(api_etcd_url_set("new")), "new",
               "0"),
        CREDENTIAL(api_key, kStatus + "key_file"),
        CREDENTIAL(api_secret, kStatus + "secret_file"),
        setter("api_server_connection_err_set", kStatus + "server_connection_err",
               CALL(api_server_connection_err_set("host", 7)), "host(7)", "0"),
        setter("api_sorvane_list_set", kStatus + "sorvane_file",
               CALL(api_sorvane_list_set(entries, 3, "green")), "red\n*green\nblue\n"),
    };
}

}  // namespace

Operations state_operations() { return joined({number_rows(), text_rows()}); }
