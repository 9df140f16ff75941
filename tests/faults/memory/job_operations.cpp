// The entry into a job and the agents' turn.
#include <cstring>

#include "cloud_http/upload_url.h"
#include "deployment.h"
#include "kdump/job_guard.h"
#include "kdump/turn_lock.h"
#include "operation.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

constexpr const char *kMarker = "/tmp/kdump_process_torture";

std::string guard_outcome() {
    without_file(kStatus + "KDUMPS_file");
    return result() + taken(kMarker) + ", " + KDUMPS_url;
}

void prepare_guard() {
    without_file(kMarker);
    world::write_file(kStatus + "KDUMPS_file", "https://other/kdumps");
    std::memset(KDUMPS_url, 0, sizeof KDUMPS_url);
}

void prepare_busy_guard() {
    prepare_guard();
    world::write_file(kMarker, "");
}

std::string turn_outcome() {
    return result() + taken(kTurnFile) + ", held " + std::to_string(g_turn_held);
}

Operation turn_row(const char *name, int (*call)(), const char *word, const char *outcome) {
    return {name,
            [=] {
                world::write_file(kTurnFile, word);
                g_turn_held = 0;
            },
            CALL(call()),
            turn_outcome,
            {outcome}};
}

}  // namespace

Operations job_operations() {
    return {
        // In its cold form this is libcurl's and OpenSSL's first start.
        {"start_processing",
         prepare_guard,
         CALL(start_processing(kMarker)),
         guard_outcome,
         {"0, '', https://other/kdumps", "0, '', https://" CLOUD_TFA_HOST "/dev/tfaapi/kdumps"},
         Reach::kNetworkFromCold},
        {"start_processing, busy",
         prepare_busy_guard,
         CALL(start_processing(kMarker)),
         guard_outcome,
         {"1, '', "}},
        turn_row("api_get_cloudwtpflag, free", api_get_cloudwtpflag, "", "0, 'cloud', held 1"),
        turn_row("api_get_cloudwtpflag, foreign", api_get_cloudwtpflag, "other",
                 "-1, 'other', held 0"),
        turn_row("api_release_cloudwtpflag", api_release_cloudwtpflag, "cloud", "0, '', held 0"),
    };
}
