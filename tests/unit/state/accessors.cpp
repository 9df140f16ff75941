#include "accessors.h"

#include "deployment.h"
#include "state/state_files.h"
#include "testing/paths.h"

namespace {

uint32_t same_bits(int32_t value) { return static_cast<uint32_t>(value); }

std::function<uint32_t(uint32_t *)> as_unsigned(uint32_t (*get)(int32_t *)) {
    return [get](uint32_t *value) { return get(reinterpret_cast<int32_t *>(value)); };
}

}  // namespace

const std::vector<NumberGetter> &number_getters() {
    const std::vector<Reading> plain = {{"0", 0},    {"1", 1},     {"42", 42},         {"010", 10},
                                        {"0x10", 0}, {"  7\n", 7}, {"12 monkeys", 12}, {"5.9", 5}};
    const auto plain_and = [&](std::vector<Reading> more) {
        more.insert(more.end(), plain.begin(), plain.end());
        return more;
    };
    const std::vector<Reading> a_switch = {{"0", 0}, {"1", 1},          {"2", 1},
                                           {"5", 1}, {"4294967295", 1}, {"0x1", 0}};
    static const std::vector<NumberGetter> rows = {
        {"api_cloud_debug_get",
         api_cloud_debug_get,
         kSettings + "cloud_debug",
         0,
         0,
         {{"0", 0},
          {"1", 1},
          {"2", 2},
          {"3", 0},
          {"7", 0},
          {"4294967295", 0},
          {"02\n", 2},
          {"0x2", 0}}},
        {"api_cloud_RenewDHCP_get", api_cloud_RenewDHCP_get, kSettings + "cloud_RenewDHCP", 1, 0,
         a_switch, false, true},
        {"api_cloud_DetectDNS_get", api_cloud_DetectDNS_get, kSettings + "cloud_DetectDNS", 1, 0,
         a_switch, false, true},
        {"api_cloud_etcd_get",
         api_cloud_etcd_get,
         kSettings + "cloud_etcd",
         1,
         0,
         {{"0", 0}, {"00", 0}, {"0x1", 0}, {"1", 1}, {"2", 1}, {"7", 1}, {"4294967295", 1}}},
        {"api_cloud_fw_upgrade_status_get", api_cloud_fw_upgrade_status_get,
         kStatus + "cloud_fw_upgrade_status_file", 0, 0, plain_and({{"4294967295", 4294967295u}}),
         true},
        {"api_cloud_fw_upgrade_flag_get", as_unsigned(api_cloud_fw_upgrade_flag_get),
         kStatus + "cloud_fw_upgrade_flag_file", 0, 0,
         plain_and({{"-1", same_bits(-1)}, {"-2147483648", same_bits(INT32_MIN)}})},
        {"api_checkin_interval_get", as_unsigned(api_checkin_interval_get),
         kStatus + "checkin_interval_file", 300, 0,
         plain_and({{"-60", same_bits(-60)}, {"2147483647", 2147483647u}})},
        {"api_quenta_server_port_get", api_quenta_server_port_get,
         kStatus + "quenta_server_port_file", 443, 1,
         plain_and({{"8443", 8443}, {"4294967295", 4294967295u}})},
    };
    return rows;
}

const std::vector<TextGetter> &text_getters() {
    static const std::vector<TextGetter> rows = {
        {"api_cloud_config_number_get", api_cloud_config_number_get,
         kSettings + "cloud_config_number_file", nullptr, 0},
        {"api_checkin_host_get", api_checkin_host_get, kStatus + "checkin_file", CLOUD_CHECKIN_HOST,
         1},
        {"api_checkin_path_get", api_checkin_path_get, kStatus + "checkinStr_file", "/checkin", 1},
        {"api_checkin_status_get", api_checkin_status_get, kStatus + "checkinStatus", nullptr, 1},
        {"api_fallback_host_get", api_fallback_host_get, kStatus + "fallback_file",
         CLOUD_CHECKIN_HOST, 1},
        {"api_connection_keeper_host_get", api_connection_keeper_host_get,
         kStatus + "connectionkeeperhost_file", CLOUD_CONNECTION_KEEPER_HOST, 1},
        {"api_connection_keeper_path_get", api_connection_keeper_path_get,
         kStatus + "connectionkeeperpath_file", "/device/register", 1},
        {"api_quenta_server_get", api_quenta_server_get, kStatus + "quenta_server_file",
         CLOUD_QUENTA_HOST, 1},
        {"api_etcd_url_get", api_etcd_url_get, kSettings + "ETCD_file",
         "https://" CLOUD_CATALOGUE_HOST "/v1/kv/services?recurse=1", 1},
    };
    return rows;
}

const std::vector<TextSetter> &text_setters() {
    static const std::vector<TextSetter> rows = {
        {"api_cloud_config_number_set", api_cloud_config_number_set,
         kSettings + "cloud_config_number_file", 1},
        {"api_checkin_host_set", api_checkin_host_set, kStatus + "checkin_file", 1},
        {"api_checkin_path_set", api_checkin_path_set, kStatus + "checkinStr_file", 1},
        {"api_checkin_status_set", api_checkin_status_set, kStatus + "checkinStatus", 1},
        {"api_fallback_host_set", api_fallback_host_set, kStatus + "fallback_file", 1},
        {"api_connection_keeper_host_set", api_connection_keeper_host_set,
         kStatus + "connectionkeeperhost_file", 1},
        {"api_connection_keeper_path_set", api_connection_keeper_path_set,
         kStatus + "connectionkeeperpath_file", 1},
        {"api_quenta_server_set", api_quenta_server_set, kStatus + "quenta_server_file", 1},
        {"api_etcd_url_set", api_etcd_url_set, kSettings + "ETCD_file", 0},
    };
    return rows;
}

const std::vector<NumberSetter> &number_setters() {
    static const std::vector<NumberSetter> rows = {
        {"api_checkin_interval_set",
         [](int64_t value) { return api_checkin_interval_set(static_cast<int32_t>(value)); },
         kStatus + "checkin_interval_file",
         {0, 300, -1, INT32_MIN, INT32_MAX}},
        {"api_quenta_server_port_set",
         [](int64_t value) { return api_quenta_server_port_set(static_cast<uint32_t>(value)); },
         kStatus + "quenta_server_port_file",
         {0, 443, 65535, UINT32_MAX}},
    };
    return rows;
}
