/*
 * Calls every public function once or more on the virtual device and prints what came of it; what must
 * is in every_function.expected. It stands for the unit tests where there is no C++ library.
 */
#define main all_names_are_there
#include "tests/product/package/c_api_test.c"
#undef main

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define API "http://127.0.0.1:8000/api/system/"

static char text[1024];
static int32_t number, found;
static uint32_t unsigned_number;

static void show(const char *call, long long result) { printf("%s: %lld\n", call, result); }

/* CALL: the result; PUT, GET: a state file is written, or read into one of the three above. */
#define CALL(call) show(#call, (long long)(call))
#define DO(call) ((call), puts(#call))
#define TEXT(call) printf("%s: %s\n", #call, (call))
#define PUT(function, ...) show(#function, (long long)function(__VA_ARGS__))
#define GET_TEXT(function) \
    (memset(text, 0, sizeof text), PUT(function, text), printf("    %s\n", text))
#define GET_SIGNED(function) (PUT(function, &number), printf("    %d\n", number))
#define GET_UNSIGNED(function) \
    (PUT(function, &unsigned_number), printf("    %u\n", unsigned_number))
#define TEXT_FILE(function) (PUT(function##_set, "word-1"), GET_TEXT(function##_get))
#define NUMBER_FILE(function, value, GET) (PUT(function##_set, value), GET(function##_get))

static void use_state_files(void) {
    char entries[2][256] = {"first.example.com", "second.example.com"};
    GET_UNSIGNED(api_cloud_RenewDHCP_get);
    GET_UNSIGNED(api_cloud_DetectDNS_get);
    GET_UNSIGNED(api_cloud_etcd_get);
    GET_UNSIGNED(api_cloud_fw_upgrade_status_get);
    GET_SIGNED(api_cloud_fw_upgrade_flag_get);
    TEXT_FILE(api_cloud_config_number);
    TEXT_FILE(api_checkin_host);
    TEXT_FILE(api_checkin_path);
    NUMBER_FILE(api_checkin_interval, INT32_MIN, GET_SIGNED);
    TEXT_FILE(api_checkin_status);
    TEXT_FILE(api_fallback_host);
    TEXT_FILE(api_connection_keeper_host);
    TEXT_FILE(api_connection_keeper_path);
    TEXT_FILE(api_quenta_server);
    NUMBER_FILE(api_quenta_server_port, UINT32_MAX, GET_UNSIGNED);
    TEXT_FILE(api_etcd_url);
    CALL(api_sorvane_list_set(entries, 2, entries[1]));
    CALL(api_server_connection_err_set("timeout", 28));
    TEXT_FILE(api_kdumps_server);
    TEXT_FILE(api_TFA);
    NUMBER_FILE(api_omcloud_seqno, 7, GET_SIGNED);
    TEXT_FILE(api_key);
    TEXT_FILE(api_secret);
}

static void compute_digests(void) {
    unsigned char digest[32] = "", again[32] = "";
    SHA256_CTX context;
    hmac_sha256_hex("what do ya want for nothing?", "Jefe", text, 65);
    TEXT(text); /* RFC 4231, test case 2 */
    DO(hmac_sha256_init(&context, (const unsigned char *)"Jefe", 4, 0));
    CALL(hmac_sha256_update(&context, "what do ya want for nothing?", 28));
    DO(hmac_sha256_final(&context, digest));
    CALL(digest[0] == 0x5b && digest[31] == 0x43);
    CALL(hmac_sha256_hex("", "", text, 65));
    CALL(api_nonce_generate(1, digest));
    CALL(api_nonce_generate(1, again) + memcmp(digest, again, 16));
    TEXT(str_case_search("Content-Length: 5", "LENGTH"));
    CALL(api_file_touch("/tmp/touched") + 10 * api_file_exist("/tmp/touched"));
    CALL(api_file_exist("/tmp/absent"));
}

static void build_json(void) {
    static const int ints[] = {1, INT32_MIN};
    static const double doubles[] = {0.1, 1e300, 1e22, -5};
    static const char *words[] = {"a\n", "\xc3\xa9"};
    JsonNode *const tree = createJsonObject(), *const array = createJsonArray();
    JsonNode *const rpc = initJsonRpcObject();
    addJsonItemToArray(array, createJsonIntArray(ints, 2));
    addJsonItemToArray(array, createJsonDoubleArray(doubles, 4));
    DO(addJsonItemToObject(tree, "array", array));
    DO(addJsonItemToArray(array, duplicateJson(array, 1)));
    DO(addJsonStringToObject(tree, "text", "word"));
    DO(addJsonIntToObject(tree, "int", -1));
    DO(addJsonDoubleToObject(tree, "double", 1.5));
    DO(addJsonBoolToObject(tree, "bool", 1));
    DO(addJsonUlongToObject(tree, "ulong", UINT32_MAX));
    DO(addJsonLongLongUintToObject(tree, "uint64", UINT64_MAX));
    JsonNode *const list = createJsonStringArray(words, 2);
    CALL(addJsonStringArrayToObject(tree, "list", list) != NULL);
    DO(copyJsonStringValueForKey(tree, rpc, "text"));
    CALL(compareJsonIntValueForKey(tree, "int", tree, "ulong"));
    CALL(compareJsonBoolValueForKey(tree, "bool", tree, "bool"));
    char *const printed = printJson(tree), *const unformatted = printJsonUnformatted(tree);
    TEXT(printed);
    TEXT(unformatted);
    char *const envelope = printJsonUnformatted(rpc);
    TEXT(envelope);
    free(printed), free(unformatted), free(envelope);
    deleteJson(rpc), deleteJson(list), deleteJson(tree);
}

static void read_json(void) {
    JsonNode *const tree = parseJsonText(
        "{\"object\": {\"text\": \"word\"}, \"array\": [1, 2.5, \"three\"], \"flag\": true, "
        "\"big\": 1e400}");
    JsonNode *const wide = parseJsonTextLongLongUint("{\"n\": 18446744073709551615}");
    const JsonNode *const array = getJsonObjectForKey(tree, "ARRAY");
    CALL(getJsonArraySize(array) + 10 * getJsonType(array));
    CALL(getJsonIntValue(getJsonChild(array)));
    CALL(getJsonDoubleValue(getJsonNext(getJsonChild(array))) * 10);
    TEXT(getJsonStringValue(getJsonArrayItem(array, 2)));
    TEXT(getJsonStringValueForKey(getJsonObjectForKey(tree, "object"), "text"));
    CALL(getJsonIntValueForKey(tree, "big", &found) + found);
    CALL(getJsonBoolValueForKey(tree, "flag", &found) + found);
    CALL(getJsonDoubleValueForKey(tree, "big") > 1e300);
    CALL(getJsonLongLongUintValueForKey(wide, "n", &found) == UINT64_MAX);
    CALL(parseJsonText("{") == NULL);
    DO(deleteJson(tree));
    deleteJson(wide);
}

static void probe_device(void) {
    MemInfo memory = {0, 0, 0};
    CALL(sn_get_mac_addr());
    TEXT(sys_mac_addr_compact);
    CALL(sn_get_mem_info(&memory) + (memory.total_kb > memory.used_kb));
    GET_SIGNED(sn_get_sys_up_time);
    memset(text, 0, sizeof text);
    CALL(api_tillet_host_get(text, 0));
    TEXT(text);
    CALL(api_system_led_blink(1) + api_system_led_blink(2));
    CALL(api_zorb_cloud_register_set(1));
    CALL(SN_Check_FW_upload_status());
    CALL(api_conn_fail_log_time_set(5));
    GET_SIGNED(api_conn_fail_log_time_get);
    CALL(api_cloud_fail_log_check());
    CALL(api_cloud_fail_log());
}

/* Their log lines tell times and ports. */
static void call_without_log(void) {
    char *body = NULL;
    CURL *const handle = curl_easy_init();
    g_console_debug = 0;
    CALL(api_get_time("https", "time.example.com"));
    CALL(curl_http("GET", "http://127.0.0.1:1/", &body, NULL)); /* refused */
    DO(curl_post_transfer_hook(handle));
    DO(curl_info_dump(handle));
    g_console_debug = 1;
    curl_easy_cleanup(handle);
}

static void reach_the_cloud(void) {
    HttpReply reply = {HTTP_REPLY_MEMORY, NULL, 0};
    char *body = NULL;
    CALL(start_processing("/tmp/kdump_process_here"));
    CALL(api_get_cloudwtpflag() + 10 * g_turn_held);
    CALL(api_release_cloudwtpflag() + 10 * g_turn_held);
    CALL(c_cloud_proxy_get(text));
    CALL(http_get(API "status", &body));
    free(body);
    CALL(http_post(API "status", "{}", &body));
    free(body);
    CALL(http_patch(API "settings/ledblink", "{\"enable\":true}", &body));
    free(body);
    CALL(http_delete(API "status", "{}", &body));
    free(body);
    CALL(http_reply_write(text, 1, 5, &reply));
    free(reply.data);
    CALL(ReadCurlDnsFile());
    strcpy(KDUMPS_url, "https://tfa.example.com/dev/tfaapi/kdumps"); /* not that of api_TFA_set */
    CALL(api_TFA_post_data("{\"filename\": \"touched\"}"));
    CALL(api_TFA_post_FILE("/tmp/touched", g_upload_url, 0));
    free(g_upload_url);
}

int main(void) {
    setvbuf(stdout, NULL, _IONBF, 0);
    GET_UNSIGNED(api_cloud_debug_get);
    g_console_debug = unsigned_number; /* which shows all that the library logs */
    DO(cloud_log("%d %s\n", 1, "line"));
    probe_device(); /* first: key and nonce use the MAC address */
    use_state_files();
    compute_digests();
    build_json();
    read_json();
    call_without_log();
    reach_the_cloud();
    return EXIT_SUCCESS;
}
