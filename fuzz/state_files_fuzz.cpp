// Any content of the one-value files, through every reader: state files, sequence number,
// credentials, site, name servers and the turn.
// Input: a line with the device's compact MAC address; then the content.
#include <fcntl.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "cloud_http/upload_url.h"
#include "device/device_api.h"
#include "fuzz.h"
#include "kdump/turn_lock.h"
#include "replies.h"
#include "state/credentials.h"
#include "state/device_identity.h"
#include "state/state_files.h"

#define SETTINGS "/mnt/data/iss_config/current_config/"
#define STATUS "/tmp/app/cloud_tmp/"

namespace {

// One file per partition, under all these names.
constexpr const char *kStatusContent = "/tmp/content";
constexpr const char *kSettingsContent = "/mnt/data/content";
constexpr const char *kNames[] = {SETTINGS "cloud_debug",
                                  SETTINGS "cloud_RenewDHCP",
                                  SETTINGS "cloud_DetectDNS",
                                  SETTINGS "cloud_etcd",
                                  SETTINGS "cloud_config_number_file",
                                  SETTINGS "ETCD_file",
                                  SETTINGS "tillet_site",
                                  STATUS "cloud_fw_upgrade_status_file",
                                  STATUS "cloud_fw_upgrade_flag_file",
                                  STATUS "checkin_file",
                                  STATUS "checkinStr_file",
                                  STATUS "checkin_interval_file",
                                  STATUS "checkinStatus",
                                  STATUS "fallback_file",
                                  STATUS "connectionkeeperhost_file",
                                  STATUS "connectionkeeperpath_file",
                                  STATUS "quenta_server_file",
                                  STATUS "quenta_server_port_file",
                                  STATUS "seqno_file",
                                  STATUS "key_file",
                                  STATUS "secret_file",
                                  "/tmp/curlDNSFile",
                                  "/tmp/cloudwtpflag"};

constexpr uint32_t (*kTextGetters[])(char *) = {
    api_cloud_config_number_get, api_checkin_host_get,           api_checkin_path_get,
    api_checkin_status_get,      api_fallback_host_get,          api_connection_keeper_host_get,
    api_quenta_server_get,       api_connection_keeper_path_get, api_etcd_url_get};

int status_content = -1;
int settings_content = -1;

bool is_blank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

// The first word, at most `most` bytes of it.
std::string_view first_word(std::string_view content, std::size_t most) {
    content.remove_prefix(static_cast<std::size_t>(
        std::find_if_not(content.begin(), content.end(), is_blank) - content.begin()));
    const auto end = std::find_if(content.begin(), content.end(), is_blank);
    return content.substr(0, std::min(most, static_cast<std::size_t>(end - content.begin())));
}

void check_texts(std::string_view content) {
    constexpr std::size_t kSize = 256;
    const std::string_view word = first_word(content, kSize - 1);
    for (const auto get : kTextGetters) {
        const std::unique_ptr<char[]> text = fuzz::zeroed(kSize);
        REQUIRE(get(text.get()) == 0);
        REQUIRE(std::string_view(text.get(), word.size()) == word && text[word.size()] == '\0');
    }
}

void check_numbers() {
    uint32_t value = 1;
    REQUIRE(api_cloud_debug_get(&value) == 0 && value <= 2);
    REQUIRE(api_cloud_RenewDHCP_get(&value) == 0 && value <= 1);
    REQUIRE(api_cloud_DetectDNS_get(&value) == 0 && value <= 1);
    REQUIRE(api_cloud_etcd_get(&value) == 0 && value <= 1);
    REQUIRE(api_cloud_fw_upgrade_status_get(&value) == value);
    REQUIRE(api_quenta_server_port_get(&value) == 0);
    int32_t number = 1;
    REQUIRE(api_cloud_fw_upgrade_flag_get(&number) == 0);
    int32_t interval = 1;
    REQUIRE(api_checkin_interval_get(&interval) == 0 && interval == number);
    int32_t sequence = 1;
    REQUIRE(api_omcloud_seqno_get(&sequence) == 0 && sequence == number);
}

void check_credential(int (*get)(char *), std::string_view content) {
    constexpr std::size_t kSize = 128;
    const std::string word = fuzz::c_text(first_word(content, kSize - 1)).get();
    const std::string suffix = sys_mac_addr_compact;
    const bool matches = word.size() >= suffix.size() &&
                         word.compare(word.size() - suffix.size(), suffix.size(), suffix) == 0;
    const std::unique_ptr<char[]> value = fuzz::zeroed(kSize);
    REQUIRE(get(value.get()) == (matches ? 0 : 1));
    REQUIRE(value.get() == (matches ? word.substr(0, word.size() - suffix.size()) : ""));
}

void check_site(std::string_view content) {
    constexpr std::size_t kSize = 256;
    fuzz::Input none(nullptr, 0);
    fuzz::answer_with(none, R"({"restful_res":{"systemInfo":{"serialNo":"SN1"}}})");
    const std::unique_ptr<char[]> url = fuzz::zeroed(kSize);
    REQUIRE(api_tillet_host_get(url.get(), 1) == 0);
    const std::string site = fuzz::c_text(first_word(content, 31)).get();
    REQUIRE(fuzz::begins_with(url.get(), "https://tillet-jp." + site + "."));
}

void check_name_servers(std::string_view content) {
    std::memset(g_curl_dns_server, 'x', sizeof g_curl_dns_server);
    REQUIRE(ReadCurlDnsFile() == (content.empty() ? -1 : 0));
    const std::size_t line = std::min(content.find('\n'), content.size() - 1) + 1;
    const std::string_view expected =
        content.substr(0, std::min(line, sizeof g_curl_dns_server - 1));
    REQUIRE(content.empty() || (std::string_view(g_curl_dns_server, expected.size()) == expected &&
                                g_curl_dns_server[expected.size()] == '\0'));
}

// The last reader: it writes into an empty file.
void check_turn(std::string_view content) {
    const std::string word = fuzz::c_text(content.substr(0, 128)).get();
    const bool granted = content.empty() || word == "cloud" || word == "zorbcon";
    REQUIRE(api_get_cloudwtpflag() == (granted ? 0 : -1));
}

void begin() {
    status_content = open(kStatusContent, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    settings_content = open(kSettingsContent, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    for (const char *name : kNames) {
        const bool is_setting = fuzz::begins_with(name, SETTINGS);
        REQUIRE(link(is_setting ? kSettingsContent : kStatusContent, name) == 0);
    }
}

void try_input(fuzz::Input input) {
    std::memset(sys_mac_addr_compact, 0, sizeof sys_mac_addr_compact);
    input.line().copy(sys_mac_addr_compact, sizeof sys_mac_addr_compact - 1);
    const std::string_view content = input.rest();
    fuzz::write_descriptor(status_content, content);
    fuzz::write_descriptor(settings_content, content);

    check_texts(content);
    check_numbers();
    check_credential(api_key_get, content);
    check_credential(api_secret_get, content);
    check_site(content);
    check_name_servers(content);
    check_turn(content);
}

}  // namespace

const fuzz::Target fuzz::target = {try_input, begin};
