/*
 * The library as a C program sees it: every public header is C11, and every public name has exactly
 * the type that agents are written for. Linked with the shared library, so each name must be there.
 */
#include <stdio.h>
#include <string.h>

#define FUNCTION(result, name, arguments) result(*const address_of_##name) arguments = name
#define VALUE(type, name)                  \
    type *const address_of_##name = &name; \
    DATA(name)
#define ARRAY(type, name, size)                   \
    type(*const address_of_##name)[size] = &name; \
    DATA(name)

/* All public data, gathered by the linker. */
struct Data {
    const char *name;
    const void *start;
    size_t size;
};
extern const struct Data __start_public_data[], __stop_public_data[];
#define DATA(name)                                            \
    __attribute__((section("public_data"), used, aligned(8))) \
    const struct Data data_##name = {#name, &name, sizeof name}

#include <cloudagent/cloud_http/curl_http.h>
VALUE(uint32_t, curl_http_fail_count);
FUNCTION(int, curl_http, (const char *, const char *, char **, const char *));
FUNCTION(int, http_get, (const char *, char **));
FUNCTION(int, http_post, (const char *, const char *, char **));
FUNCTION(int, http_patch, (const char *, const char *, char **));
FUNCTION(int, http_delete, (const char *, const char *, char **));
FUNCTION(void, curl_post_transfer_hook, (CURL *));
FUNCTION(void, curl_info_dump, (CURL *));

#include <cloudagent/cloud_http/endpoints.h>
FUNCTION(int, api_kdumps_server_get, (char *));
FUNCTION(int, api_kdumps_server_set, (const char *));
FUNCTION(int, api_TFA_get, (char *));
FUNCTION(int, api_TFA_set, (const char *));

#include <cloudagent/cloud_http/file_upload.h>
FUNCTION(int, api_TFA_post_FILE, (const char *, const char *, int));

#include <cloudagent/cloud_http/http_reply.h>
FUNCTION(size_t, http_reply_write, (char *, size_t, size_t, void *));

#include <cloudagent/cloud_http/proxy.h>
ARRAY(char, g_proxy_server, 160);
FUNCTION(int, c_cloud_proxy_get, (char *));

#include <cloudagent/cloud_http/upload_url.h>
ARRAY(char, KDUMPS_url, 1024);
VALUE(char *, g_upload_url);
ARRAY(char, g_curl_dns_server, 64);
VALUE(uint32_t, g_detect_dns);
FUNCTION(int, api_TFA_post_data, (const char *));
FUNCTION(int, ReadCurlDnsFile, (void));

#include <cloudagent/device/cloud_time.h>
FUNCTION(int, api_get_time, (const char *, const char *));

#include <cloudagent/device/connection_fail_log.h>
VALUE(uint32_t, conn_fail_logged_30m);
VALUE(uint32_t, conn_fail_logged_60m);
FUNCTION(int, api_conn_fail_log_time_set, (uint32_t));
FUNCTION(int, api_conn_fail_log_time_get, (int32_t *));
FUNCTION(int, api_cloud_fail_log_check, (void));
FUNCTION(int, api_cloud_fail_log, (void));

#include <cloudagent/device/device_api.h>
FUNCTION(int, api_tillet_host_get, (char *, uint32_t));

#include <cloudagent/device/firmware_upload_watch.h>
FUNCTION(uint32_t, SN_Check_FW_upload_status, (void));

#include <cloudagent/device/led.h>
FUNCTION(int, api_system_led_blink, (uint32_t));
FUNCTION(int, api_zorb_cloud_register_set, (int));

#include <cloudagent/device/system_status.h>
FUNCTION(int, sn_get_mac_addr, (void));
FUNCTION(int, sn_get_mem_info, (MemInfo *));
FUNCTION(int, sn_get_sys_up_time, (int32_t *));

#include <cloudagent/json_parser/json_parser.h>
FUNCTION(JsonNode *, parseJsonText, (const char *));
FUNCTION(JsonNode *, parseJsonTextLongLongUint, (const char *));
FUNCTION(void, deleteJson, (JsonNode *));
FUNCTION(JsonNode *, getJsonObjectForKey, (const JsonNode *, const char *));
FUNCTION(int, getJsonType, (const JsonNode *));
FUNCTION(int, getJsonArraySize, (const JsonNode *));
FUNCTION(JsonNode *, getJsonArrayItem, (const JsonNode *, int));
FUNCTION(JsonNode *, getJsonChild, (const JsonNode *));
FUNCTION(JsonNode *, getJsonNext, (const JsonNode *));
FUNCTION(char *, getJsonStringValue, (const JsonNode *));
FUNCTION(int, getJsonIntValue, (const JsonNode *));
FUNCTION(double, getJsonDoubleValue, (const JsonNode *));
FUNCTION(char *, getJsonStringValueForKey, (const JsonNode *, const char *));
FUNCTION(int, getJsonIntValueForKey, (const JsonNode *, const char *, int *));
FUNCTION(int, getJsonBoolValueForKey, (const JsonNode *, const char *, int *));
FUNCTION(uint64_t, getJsonLongLongUintValueForKey, (const JsonNode *, const char *, int *));
FUNCTION(double, getJsonDoubleValueForKey, (const JsonNode *, const char *));
FUNCTION(JsonNode *, createJsonObject, (void));
FUNCTION(JsonNode *, createJsonArray, (void));
FUNCTION(void, addJsonItemToObject, (JsonNode *, const char *, JsonNode *));
FUNCTION(void, addJsonItemToArray, (JsonNode *, JsonNode *));
FUNCTION(void, addJsonStringToObject, (JsonNode *, const char *, const char *));
FUNCTION(void, addJsonIntToObject, (JsonNode *, const char *, int32_t));
FUNCTION(void, addJsonDoubleToObject, (JsonNode *, const char *, double));
FUNCTION(void, addJsonBoolToObject, (JsonNode *, const char *, int));
FUNCTION(void, addJsonUlongToObject, (JsonNode *, const char *, uint32_t));
FUNCTION(void, addJsonLongLongUintToObject, (JsonNode *, const char *, uint64_t));
FUNCTION(JsonNode *, createJsonIntArray, (const int *, int));
FUNCTION(JsonNode *, createJsonDoubleArray, (const double *, int));
FUNCTION(JsonNode *, createJsonStringArray, (const char **, int));
FUNCTION(JsonNode *, initJsonRpcObject, (void));
FUNCTION(void, copyJsonStringValueForKey, (const JsonNode *, JsonNode *, const char *));
FUNCTION(JsonNode *, addJsonStringArrayToObject, (JsonNode *, const char *, const JsonNode *));
FUNCTION(int, compareJsonIntValueForKey,
         (const JsonNode *, const char *, const JsonNode *, const char *));
FUNCTION(int, compareJsonBoolValueForKey,
         (const JsonNode *, const char *, const JsonNode *, const char *));
FUNCTION(char *, printJson, (const JsonNode *));
FUNCTION(char *, printJsonUnformatted, (const JsonNode *));
FUNCTION(JsonNode *, duplicateJson, (const JsonNode *, int));

#include <cloudagent/kdump/job_guard.h>
VALUE(int, g_turn_lock_absent);
VALUE(int, g_http_initialised);
FUNCTION(uint32_t, start_processing, (const char *));

#include <cloudagent/kdump/turn_lock.h>
VALUE(int, g_turn_held);
FUNCTION(int, api_get_cloudwtpflag, (void));
FUNCTION(int, api_release_cloudwtpflag, (void));

#include <cloudagent/log/log.h>
VALUE(uint32_t, g_console_debug);
VALUE(uint32_t, g_file_log);
ARRAY(char, g_log_path, 128);
FUNCTION(void, cloud_log, (const char *, ...));

#include <cloudagent/state/credentials.h>
FUNCTION(int, api_omcloud_seqno_get, (int32_t *));
FUNCTION(int, api_omcloud_seqno_set, (int32_t));
FUNCTION(int, api_key_set, (const char *));
FUNCTION(int, api_secret_set, (const char *));
FUNCTION(int, api_key_get, (char *));
FUNCTION(int, api_secret_get, (char *));

#include <cloudagent/state/device_identity.h>
ARRAY(char, sys_mac_addr, 32);
ARRAY(char, sys_mac_addr_compact, 32);

#include <cloudagent/state/digest.h>
ARRAY(unsigned char, hmac_ipad, 64);
ARRAY(unsigned char, hmac_opad, 64);
FUNCTION(void, hmac_sha256_init, (SHA256_CTX *, const unsigned char *, int32_t, int));
FUNCTION(int, hmac_sha256_update, (SHA256_CTX *, const void *, size_t));
FUNCTION(void, hmac_sha256_final, (SHA256_CTX *, unsigned char *));
FUNCTION(int, hmac_sha256_hex, (const char *, const char *, char *, size_t));
FUNCTION(int, api_nonce_generate, (uint32_t, unsigned char *));
FUNCTION(char *, str_case_search, (const char *, const char *));
FUNCTION(int, api_file_exist, (const char *));
FUNCTION(int, api_file_touch, (const char *));

#include <cloudagent/state/state_files.h>
FUNCTION(uint32_t, api_cloud_debug_get, (uint32_t *));
FUNCTION(uint32_t, api_cloud_RenewDHCP_get, (uint32_t *));
FUNCTION(uint32_t, api_cloud_DetectDNS_get, (uint32_t *));
FUNCTION(uint32_t, api_cloud_etcd_get, (uint32_t *));
FUNCTION(uint32_t, api_cloud_fw_upgrade_status_get, (uint32_t *));
FUNCTION(uint32_t, api_cloud_fw_upgrade_flag_get, (int32_t *));
FUNCTION(uint32_t, api_cloud_config_number_set, (const char *));
FUNCTION(uint32_t, api_cloud_config_number_get, (char *));
FUNCTION(uint32_t, api_checkin_host_get, (char *));
FUNCTION(uint32_t, api_checkin_host_set, (const char *));
FUNCTION(uint32_t, api_checkin_path_get, (char *));
FUNCTION(uint32_t, api_checkin_path_set, (const char *));
FUNCTION(uint32_t, api_checkin_interval_get, (int32_t *));
FUNCTION(uint32_t, api_checkin_interval_set, (int32_t));
FUNCTION(uint32_t, api_checkin_status_get, (char *));
FUNCTION(uint32_t, api_checkin_status_set, (const char *));
FUNCTION(uint32_t, api_fallback_host_get, (char *));
FUNCTION(uint32_t, api_fallback_host_set, (const char *));
FUNCTION(uint32_t, api_connection_keeper_host_get, (char *));
FUNCTION(uint32_t, api_connection_keeper_host_set, (const char *));
FUNCTION(uint32_t, api_connection_keeper_path_get, (char *));
FUNCTION(uint32_t, api_connection_keeper_path_set, (const char *));
FUNCTION(uint32_t, api_quenta_server_get, (char *));
FUNCTION(uint32_t, api_quenta_server_set, (const char *));
FUNCTION(uint32_t, api_quenta_server_port_get, (uint32_t *));
FUNCTION(uint32_t, api_quenta_server_port_set, (uint32_t));
FUNCTION(uint32_t, api_sorvane_list_set, (char (*)[256], int, const char *));
FUNCTION(uint32_t, api_server_connection_err_set, (const char *, int));
FUNCTION(uint32_t, api_etcd_url_set, (const char *));
FUNCTION(uint32_t, api_etcd_url_get, (char *));

/* Nothing has run yet in this process: every public variable has its start value, zero. */
int main(void) {
    static const char zeros[2048] = {0};
    int wrong = 0;
    for (const struct Data *data = __start_public_data; data != __stop_public_data; ++data) {
        if (data->size > sizeof zeros || memcmp(data->start, zeros, data->size) != 0) {
            wrong += printf("%s does not start at zero\n", data->name) > 0;
        }
    }
    cloud_log("both sinks are off, so this goes nowhere\n");
    return wrong;
}
