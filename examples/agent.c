/*
 * A sibling agent: what an agent of the device does with the library, one step after the other.
 *
 *   agent [TIME_HOST]
 *
 * Prints one line per step and ends with status 0 when every step went as expected. Makefile and
 * CMakeLists.txt show how to build it with the installed library.
 */
#include <cloudagent/cloud_http/curl_http.h>
#include <cloudagent/device/cloud_time.h>
#include <cloudagent/device/connection_fail_log.h>
#include <cloudagent/device/device_api.h>
#include <cloudagent/device/firmware_upload_watch.h>
#include <cloudagent/device/led.h>
#include <cloudagent/device/system_status.h>
#include <cloudagent/json_parser/json_parser.h>
#include <cloudagent/kdump/turn_lock.h>
#include <cloudagent/log/log.h>
#include <cloudagent/state/credentials.h>
#include <cloudagent/state/device_identity.h>
#include <cloudagent/state/digest.h>
#include <cloudagent/state/state_files.h>
#include <curl/curl.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static bool all_good = true;

__attribute__((format(printf, 2, 3))) static void report(bool good, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    fputs(good ? "ok      " : "FAILED  ", stdout);
    vprintf(format, arguments);
    putchar('\n');
    va_end(arguments);
    all_good = all_good && good;
}

static void probe_device(void) {
    MemInfo memory = {0}; /* its third counter is added to */
    int32_t up_time = 0;
    const bool has_mac = sn_get_mac_addr() == 0;
    report(has_mac, "MAC address %s, compact %s", sys_mac_addr, sys_mac_addr_compact);
    const bool has_memory = sn_get_mem_info(&memory) == 1;
    report(has_memory, "memory: %u kB, %u used, %u buffers and caches", memory.total_kb,
           memory.used_kb, memory.buffers_cached_kb);
    sn_get_sys_up_time(&up_time);
    report(up_time >= 0, "up for %d seconds", up_time);
}

/* The key is stored with the MAC address, so it is of no use on another device. */
static void keep_key(char key[128]) {
    const char *const handed_out = "key-from-registration";
    const bool stored = api_key_set(handed_out) == 0;
    const bool read = api_key_get(key) == 0; /* key comes zeroed: no terminator is written */
    report(stored && read && strcmp(key, handed_out) == 0, "key stored and read back: %s", key);
}

static void sign_request(const char *url, const char *key) {
    unsigned char nonce[16];
    char message[512], signature[65];
    int32_t number = 0;
    api_omcloud_seqno_get(&number); /* 1 on a fresh device */
    api_nonce_generate((uint32_t)time(NULL), nonce);
    int used = snprintf(message, sizeof message, "GET %s %d ", url, number);
    for (size_t i = 0; i < sizeof nonce; ++i) {
        used += snprintf(message + used, sizeof message - (size_t)used, "%02x", nonce[i]);
    }
    hmac_sha256_hex(message, key, signature, sizeof signature);
    report(strlen(signature) == 64, "message %d signed: %s", number, signature);
    report(api_omcloud_seqno_set(number + 1) == 0, "next message is %d", number + 1);
}

static void use_turn(void) {
    report(api_get_cloudwtpflag() == 0 && g_turn_held, "turn claimed");
    report(api_system_led_blink(1) == 0, "LED blinks");
    report(api_system_led_blink(0) == 0, "LED is steady, unless the other agent wants it to blink");
    report(api_release_cloudwtpflag() == 0 && !g_turn_held, "turn released");
}

/* An agent makes this call at each failed attempt to reach its cloud. Here an hour passes in a
 * moment: instead of the clock going on, the start of the outage is moved back. */
static void sit_out_an_hour(void) {
    int32_t start = 0;
    api_conn_fail_log_time_set(0);
    api_cloud_fail_log();
    const bool opened = api_conn_fail_log_time_get(&start) == 0;
    report(opened, "outage began at up-time %d", start);
    for (int minutes = 10; minutes <= 60; minutes += 10) {
        FILE *const record = fopen("/tmp/app/cloud_tmp/conn_fail_log_time.txt", "w");
        if (record != NULL) {
            fprintf(record, "%d", start - minutes * 60);
            fclose(record);
        }
        api_cloud_fail_log();
        report(conn_fail_logged_30m == (minutes >= 30) && conn_fail_logged_60m == (minutes >= 60),
               "%d minutes later: failure log requested %u times", minutes,
               conn_fail_logged_30m + conn_fail_logged_60m);
    }
    report(api_conn_fail_log_time_set(0) == 0, "connected again: outage forgotten");
}

static void watch_firmware(void) {
    static const char *const meanings[] = {"none", "by data.cgi", "by another uploader"};
    const uint32_t status = SN_Check_FW_upload_status();
    report(status <= 2, "firmware upload: %s", status <= 2 ? meanings[status] : "?");
}

/* api_get_time does not tell whether it worked; the local service shows the time that was set. */
static void set_clock(const char *host) {
    char *reply = NULL;
    api_get_time("https", host);
    http_get("http://127.0.0.1:8000/api/system/settings/time", &reply);
    JsonNode *const document = parseJsonText(reply); /* lookups take null for "not there" */
    free(reply);
    const JsonNode *const settings =
        getJsonObjectForKey(getJsonObjectForKey(document, "restful_res"), "timeConfs");
    const char *const set = getJsonStringValueForKey(settings, "manualTime");
    report(set != NULL && *set != '\0', "clock set from https://%s/time: %s", host,
           set != NULL ? set : "");
    deleteJson(document); /* and with it the text */
}

int main(int argc, char **argv) {
    char url[256] = "", key[128] = "";
    api_cloud_debug_get(&g_console_debug); /* the operator's switch for the log on the console */
    if (curl_global_init(CURL_GLOBAL_ALL) != 0) {
        return EXIT_FAILURE;
    }
    probe_device(); /* first: key and nonce use the MAC address */
    report(api_tillet_host_get(url, 0) == 0, "device API at %s", url);
    keep_key(key);
    sign_request(url, key);
    use_turn();
    sit_out_an_hour();
    watch_firmware();
    set_clock(argc > 1 ? argv[1] : "time.example.com");
    curl_global_cleanup();
    return all_good ? EXIT_SUCCESS : EXIT_FAILURE;
}
