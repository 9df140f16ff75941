// State files. A file that cannot be opened for want of memory counts as one that is not there.
#include <cstring>

#include "deployment.h"
#include "operation.h"
#include "state/credentials.h"
#include "state/device_identity.h"
#include "state/state_files.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

long g_result;
char g_text[1024];
uint32_t g_unsigned;
int32_t g_signed;

std::string result() { return std::to_string(g_result) + ": "; }

template <class Getter>
Operation number_getter(const char *function, Getter *getter, const std::string &path,
                        uint32_t &value, const char *content, const char *missing) {
    return alone(
        function, [=] { world::write_file(path, content); },
        [=, &value] { g_result = static_cast<long>(getter(&value)); },
        [&value] { return result() + std::to_string(value); },
        {std::string("0: ") + content, std::string("0: ") + missing});
}

template <class Getter>
Operation signed_getter(const char *function, Getter *getter, const std::string &path,
                        const char *missing) {
    return alone(
        function, [=] { world::write_file(path, "41"); },
        [=] { g_result = static_cast<long>(getter(&g_signed)); },
        [] { return result() + std::to_string(g_signed); }, {"0: 41", missing});
}

// A switch that its getter creates; without memory to read it, it is switched on.
template <class Getter>
Operation switch_getter(const char *function, Getter *getter, const std::string &path) {
    return alone(
        function, [=] { world::write_file(path, "0"); },
        [=] { g_result = static_cast<long>(getter(&g_unsigned)); },
        [=] { return result() + std::to_string(g_unsigned) + " " + content_of(path); },
        {"0: 0 '0'", "0: 1 '0'", "0: 1 '1'"});
}

template <class Getter>
Operation text_getter(const char *function, Getter *getter, const std::string &path,
                      const std::string &missing) {
    return alone(
        function,
        [=] {
            world::write_file(path, "stored");
            std::strcpy(g_text, "untouched");
        },
        [=] { g_result = static_cast<long>(getter(g_text)); }, [] { return result() + g_text; },
        {"0: stored", "0: " + missing});
}

// Key and secret: nothing is handed out on failure.
template <class Getter>
Operation bound_getter(const char *function, Getter *getter, const std::string &path) {
    return alone(
        function,
        [=] {
            world::write_file(path, "stored88dc");
            std::strcpy(sys_mac_addr_compact, "88dc");
            std::memset(g_text, 0, sizeof g_text);
        },
        [=] { g_result = getter(g_text); },
        [] {
            sys_mac_addr_compact[0] = '\0';
            return result() + g_text;
        },
        {"0: stored", "1: "});
}

// The file holds the new value, or the old one untouched.
Operation setter(const char *function, const std::string &path, std::function<long()> call,
                 const char *written, const char *refused = "1") {
    return alone(
        function, [=] { world::write_file(path, "old"); }, [=] { g_result = call(); },
        [=] { return result() + content_of(path); },
        {std::string("0: '") + written + "'", std::string(refused) + ": 'old'"});
}

template <class Setter>
Operation text_setter(const char *function, Setter *set, const std::string &path,
                      const char *refused = "1") {
    return setter(
        function, path, [=] { return static_cast<long>(set("new")); }, "new", refused);
}

template <class Setter>
Operation number_setter(const char *function, Setter *set, const std::string &path) {
    return setter(
        function, path, [=] { return static_cast<long>(set(17)); }, "17");
}

Operation sorvane_list() {
    return setter(
        "api_sorvane_list_set", kStatus + "sorvane_file",
        [] {
            static char entries[3][256] = {"red", "green", "blue"};
            return static_cast<long>(api_sorvane_list_set(entries, 3, "green"));
        },
        "red\n*green\nblue\n");
}

#define ROW(builder, function, ...) builder(#function, function, __VA_ARGS__)

Operations number_rows() {
    return {
        ROW(number_getter, api_cloud_debug_get, kSettings + "cloud_debug", g_unsigned, "2", "0"),
        ROW(switch_getter, api_cloud_RenewDHCP_get, kSettings + "cloud_RenewDHCP"),
        ROW(switch_getter, api_cloud_DetectDNS_get, kSettings + "cloud_DetectDNS"),
        ROW(number_getter, api_cloud_etcd_get, kSettings + "cloud_etcd", g_unsigned, "0", "1"),
        alone(
            "api_cloud_fw_upgrade_status_get",
            [] { world::write_file(kStatus + "cloud_fw_upgrade_status_file", "7"); },
            [] { g_result = api_cloud_fw_upgrade_status_get(&g_unsigned); },
            [] { return result() + std::to_string(g_unsigned); }, {"7: 7", "0: 0"}),
        ROW(signed_getter, api_cloud_fw_upgrade_flag_get, kStatus + "cloud_fw_upgrade_flag_file",
            "0: 0"),
        ROW(signed_getter, api_checkin_interval_get, kStatus + "checkin_interval_file", "0: 300"),
        ROW(number_setter, api_checkin_interval_set, kStatus + "checkin_interval_file"),
        ROW(number_getter, api_quenta_server_port_get, kStatus + "quenta_server_port_file",
            g_unsigned, "8443", "443"),
        ROW(number_setter, api_quenta_server_port_set, kStatus + "quenta_server_port_file"),
        ROW(signed_getter, api_omcloud_seqno_get, kStatus + "seqno_file", "1: 1"),
        ROW(number_setter, api_omcloud_seqno_set, kStatus + "seqno_file"),
    };
}

Operations text_rows() {
    const std::string untouched = "untouched";
    return {
        ROW(text_getter, api_cloud_config_number_get, kSettings + "cloud_config_number_file",
            untouched),
        ROW(text_setter, api_cloud_config_number_set, kSettings + "cloud_config_number_file"),
        ROW(text_getter, api_checkin_host_get, kStatus + "checkin_file", CLOUD_CHECKIN_HOST),
        ROW(text_setter, api_checkin_host_set, kStatus + "checkin_file"),
        ROW(text_getter, api_checkin_path_get, kStatus + "checkinStr_file", "/checkin"),
        ROW(text_setter, api_checkin_path_set, kStatus + "checkinStr_file"),
        ROW(text_getter, api_checkin_status_get, kStatus + "checkinStatus", untouched),
        ROW(text_setter, api_checkin_status_set, kStatus + "checkinStatus"),
        ROW(text_getter, api_fallback_host_get, kStatus + "fallback_file", CLOUD_CHECKIN_HOST),
        ROW(text_setter, api_fallback_host_set, kStatus + "fallback_file"),
        ROW(text_getter, api_connection_keeper_host_get, kStatus + "connectionkeeperhost_file",
            CLOUD_CONNECTION_KEEPER_HOST),
        ROW(text_setter, api_connection_keeper_host_set, kStatus + "connectionkeeperhost_file"),
        ROW(text_getter, api_connection_keeper_path_get, kStatus + "connectionkeeperpath_file",
            "/device/register"),
        ROW(text_setter, api_connection_keeper_path_set, kStatus + "connectionkeeperpath_file"),
        ROW(text_getter, api_quenta_server_get, kStatus + "quenta_server_file", CLOUD_QUENTA_HOST),
        ROW(text_setter, api_quenta_server_set, kStatus + "quenta_server_file"),
        ROW(text_getter, api_etcd_url_get, kSettings + "ETCD_file",
            "https://" CLOUD_CATALOGUE_HOST "/v1/kv/services?recurse=1"),
        ROW(text_setter, api_etcd_url_set, kSettings + "ETCD_file", "0"),
        ROW(text_setter, api_key_set, kStatus + "key_file"),
        ROW(bound_getter, api_key_get, kStatus + "key_file"),
        ROW(text_setter, api_secret_set, kStatus + "secret_file"),
        ROW(bound_getter, api_secret_get, kStatus + "secret_file"),
        setter(
            "api_server_connection_err_set", kStatus + "server_connection_err",
            [] { return static_cast<long>(api_server_connection_err_set("host", 7)); }, "host(7)",
            "0"),
        sorvane_list(),
    };
}

}  // namespace

Operations state_operations() { return joined({number_rows(), text_rows()}); }
