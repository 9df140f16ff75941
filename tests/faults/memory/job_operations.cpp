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

int g_result;

std::string guard_outcome() {
    const std::string outcome =
        std::to_string(g_result) + ", " + content_of(kMarker) + ", " + KDUMPS_url;
    without_file(kMarker);
    without_file(kStatus + "KDUMPS_file");
    return outcome;
}

void prepare_guard() {
    without_file(kMarker);
    world::write_file(kStatus + "KDUMPS_file", "https://other/kdumps");
    std::memset(KDUMPS_url, 0, sizeof KDUMPS_url);
}

void enter_job() { g_result = static_cast<int>(start_processing(kMarker)); }

std::string turn_outcome() {
    const std::string outcome = std::to_string(g_result) + ", " + content_of(kTurnFile) +
                                ", held " + std::to_string(g_turn_held);
    without_file(kTurnFile);
    return outcome;
}

Operation turn_row(const char *function, int (*call)(), const char *situation, const char *word,
                   const char *outcome) {
    return {function,
            situation,
            Reach::kAlone,
            [=] {
                world::write_file(kTurnFile, word);
                g_turn_held = 0;
            },
            [=] { g_result = call(); },
            turn_outcome,
            {outcome}};
}

}  // namespace

Operations job_operations() {
    return {
        // In its cold form this is libcurl's and OpenSSL's first start.
        networked_from_cold(
            "start_processing", prepare_guard, enter_job, guard_outcome,
            {"0, '', https://other/kdumps", "0, '', https://" CLOUD_TFA_HOST "/dev/tfaapi/kdumps"}),
        alone("start_processing, busy",
              [] {
                  prepare_guard();
                  world::write_file(kMarker, "");
              },
              enter_job, guard_outcome, {"1, '', "}),
        turn_row("api_get_cloudwtpflag", api_get_cloudwtpflag, "free", "", "0, 'cloud', held 1"),
        turn_row("api_get_cloudwtpflag", api_get_cloudwtpflag, "foreign", "other",
                 "-1, 'other', held 0"),
        turn_row("api_release_cloudwtpflag", api_release_cloudwtpflag, "", "cloud",
                 "0, '', held 0"),
    };
}
