// Any replies on the way from the cloud's time to the device's clock.
// Input: the time service's scheme and host, one per line; then the cloud's reply and those of the
// local service.
#include "device/cloud_time.h"
#include "fuzz.h"
#include "replies.h"

namespace {

constexpr std::string_view kBodyStart = "{\"manualTime\":\"";

void check_setting(const fuzz::Request &request) {
    constexpr std::size_t kLongestBody = 99;
    REQUIRE(request.method == "PATCH");
    REQUIRE(fuzz::begins_with(request.body, kBodyStart));
    REQUIRE(request.body.size() <= kLongestBody);
    REQUIRE(request.body.size() == kLongestBody ||
            request.body.substr(request.body.size() - 2) == "\"}");
}

void try_input(fuzz::Input input) {
    const std::unique_ptr<char[]> scheme = fuzz::c_text(input.line());
    const std::unique_ptr<char[]> host = fuzz::c_text(input.line());
    fuzz::answer_with(input);
    REQUIRE(api_get_time(scheme.get(), host.get()) == -1);

    const std::vector<fuzz::Request> &requests = fuzz::requests();
    REQUIRE(!requests.empty() && requests.size() <= 3);
    REQUIRE(requests[0].method == "GET" && requests[0].url.size() <= 255);
    if (requests.size() > 1) {
        REQUIRE(requests[0].code == 0 && requests[0].status == 200);
    }
    if (requests.size() > 2) {
        check_setting(requests[2]);
    }
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};
