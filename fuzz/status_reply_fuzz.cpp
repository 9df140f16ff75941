// Any reply of the local service about the system: MAC address, up-time, and the host of the device
// API, which takes the serial number.
// Input: three replies.
#include <algorithm>
#include <cstring>

#include "device/device_api.h"
#include "device/system_status.h"
#include "fuzz.h"
#include "json_parser/owned_json.h"
#include "replies.h"
#include "state/device_identity.h"

using cloudagent::OwnedJson;

namespace {

void check_mac_address() {
    std::memset(sys_mac_addr, 'x', sizeof sys_mac_addr);
    std::memset(sys_mac_addr_compact, 'x', sizeof sys_mac_addr_compact);
    if (sn_get_mac_addr() != 0) {
        REQUIRE(sys_mac_addr[0] == 'x' && sys_mac_addr_compact[0] == 'x');
        return;
    }
    REQUIRE(sys_mac_addr[sizeof sys_mac_addr - 1] == '\0');
    REQUIRE(sys_mac_addr_compact[sizeof sys_mac_addr_compact - 1] == '\0');
    std::string without_colons = sys_mac_addr;
    without_colons.erase(std::remove(without_colons.begin(), without_colons.end(), ':'),
                         without_colons.end());
    // A truncated address may hold more after the cut.
    REQUIRE(fuzz::begins_with(sys_mac_addr_compact, without_colons));
    REQUIRE(std::strlen(sys_mac_addr) == sizeof sys_mac_addr - 1 ||
            sys_mac_addr_compact == without_colons);
    REQUIRE(!fuzz::contains(sys_mac_addr_compact, ":"));
}

// A second reader of the reply.
int expected_up_time(const char *reply) {
    const OwnedJson document(parseJsonText(reply));
    const JsonNode *const envelope = getJsonObjectForKey(document.get(), "restful_res");
    const JsonNode *const info = getJsonObjectForKey(envelope, "systemInfo");
    int found = 0;
    const int up_time = getJsonIntValueForKey(info, "upTime", &found);
    return info == nullptr ? -2 : found != 0 ? up_time : -1;
}

void check_up_time(std::string_view reply) {
    int32_t up_time = 12345;
    REQUIRE(sn_get_sys_up_time(&up_time) == 0);
    const bool plain = !reply.empty() && reply.front() != '!' && reply.front() != '#';
    REQUIRE(!plain || up_time == expected_up_time(fuzz::c_text(reply).get()));
}

void check_host() {
    constexpr std::size_t kSize = 256;
    const std::unique_ptr<char[]> out = fuzz::zeroed(kSize);
    const int result = api_tillet_host_get(out.get(), 0);
    const std::string host(out.get(), strnlen(out.get(), kSize));
    if (result == 0) {
        REQUIRE(host.size() < kSize);
        REQUIRE(fuzz::begins_with(host, "https://tillet.production."));
        REQUIRE(fuzz::contains(host, "/v1/devices/"));
    } else {
        REQUIRE(result == -1 && host.empty());
    }
}

void try_input(fuzz::Input input) {
    fuzz::Input replies = input;
    input.block();
    const std::string_view second = input.block();
    fuzz::answer_with(replies);
    check_mac_address();
    check_up_time(second);
    check_host();
    REQUIRE(fuzz::requests().size() == 3);
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};
