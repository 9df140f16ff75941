#include "kdump/job_guard.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "base/owned.h"
#include "cloud_http/endpoints.h"
#include "cloud_http/upload_url.h"
#include "log/log.h"

using namespace cloudagent;

int g_turn_lock_absent = 0;
int g_http_initialised = 0;

namespace {

// Creates the marker; false when it exists. O_EXCL makes the claim atomic: of two concurrent runs,
// exactly one wins. A symlink counts as a marker.
bool claim(const char *marker) noexcept {
    if (marker == nullptr) {
        return true;
    }
    const OwnedDescriptor created(open(marker, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    return created.get() >= 0 || errno != EEXIST;
}

}  // namespace

uint32_t start_processing(const char *marker) noexcept {
    if (!claim(marker)) {
        return 1;
    }
    api_kdumps_server_get(KDUMPS_url);
    cloud_log("%s %d KDUMPS_url %s\n", __func__, 578, KDUMPS_url);
    g_turn_lock_absent = access("/tmp/cloudwtpflag", F_OK) == 0 ? 0 : 1;
    curl_global_init(CURL_GLOBAL_ALL);
    g_http_initialised = 1;
    return 0;
}
