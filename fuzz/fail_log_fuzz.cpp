// Any replies of the local service, and any record of an outage, for the connection-failure log.
// Input: a line with "s" for a stop file, "n" for no record; a line of the record; then the
// replies.
#include "device/connection_fail_log.h"
#include "fuzz.h"
#include "replies.h"

namespace {

constexpr const char *kRecord = "/tmp/app/cloud_tmp/conn_fail_log_time.txt";
constexpr const char *kStop = "/mnt/data/iss_config/cloud_conn_fail_log.stop";

void arrange(std::string_view choices, std::string_view record) {
    unlink(kStop);
    unlink(kRecord);
    if (fuzz::contains(choices, "s")) {
        fuzz::write_file(kStop, "");
    }
    if (!fuzz::contains(choices, "n")) {
        fuzz::write_file(kRecord, record);
    }
    conn_fail_logged_30m = fuzz::contains(choices, "3") ? 1 : 0;
    conn_fail_logged_60m = fuzz::contains(choices, "6") ? 1 : 0;
}

int posts() {
    int count = 0;
    for (const fuzz::Request &request : fuzz::requests()) {
        REQUIRE(request.method == "GET" || request.body.empty());
        count += request.method == "POST" ? 1 : 0;
    }
    return count;
}

void try_input(fuzz::Input input) {
    const std::string_view choices = input.line();
    arrange(choices, input.line());
    const uint32_t flags_before = conn_fail_logged_30m + conn_fail_logged_60m;
    const bool had_record = fuzz::exists(kRecord);

    fuzz::answer_with(input);
    REQUIRE(api_cloud_fail_log() == 0);

    const int sent = posts();
    REQUIRE(conn_fail_logged_30m <= 1 && conn_fail_logged_60m <= 1);
    REQUIRE(conn_fail_logged_30m + conn_fail_logged_60m ==
            flags_before + static_cast<unsigned>(sent));
    REQUIRE(sent == 0 || (sent == 1 && had_record));
    REQUIRE(had_record ? fuzz::exists(kRecord) : sent == 0);
    if (fuzz::exists(kStop)) {
        REQUIRE(fuzz::requests().empty() && fuzz::exists(kRecord) == had_record);
    }
    const int32_t untouched = 7;
    int32_t start = untouched;
    REQUIRE(api_conn_fail_log_time_get(&start) == (fuzz::exists(kRecord) ? 0 : -1));
    REQUIRE(had_record || !fuzz::exists(kRecord) || start >= 0);
    REQUIRE(api_conn_fail_log_time_set(0) == 0 && !fuzz::exists(kRecord));
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};
