// kdump KIND [ARG]: uploads one kind of diagnostic dump. Always exits 0; the log shows failures.
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "cloud_http/upload_url.h"
#include "kdump/upload_job.h"
#include "log/log.h"
#include "state/state_files.h"

using namespace cloudagent;

namespace {

bool begins_with(const char *text, const char *start) noexcept {
    return std::strncmp(text, start, std::strlen(start)) == 0;
}

// Settings come from files and the local service only, but libraries, shell and tools read many
// variables. Keeps the tools' places, the time zone and the loader's variables.
void forget_environment() noexcept {
    char **kept = environ;
    for (char **at = environ; *at != nullptr; ++at) {
        if (begins_with(*at, "PATH=") || begins_with(*at, "TZ=") || begins_with(*at, "LD_")) {
            *kept++ = *at;
        }
    }
    *kept = nullptr;
}

}  // namespace

int main(int argc, char **argv) {
    // libcurl writes a line of its trace in pieces; line buffering makes that one write.
    static char trace_lines[1024];
    (void)std::setvbuf(stderr, trace_lines, _IOLBF, sizeof trace_lines);
    forget_environment();
    api_cloud_debug_get(&g_console_debug);
    api_cloud_DetectDNS_get(&g_detect_dns);
    cloud_log("##################kdump##################\n");

    const char *const word = argc >= 2 ? argv[1] : nullptr;
    if (word == nullptr) {
        cloud_log("%s %d argv[1] = NULL\n", __func__, 640);
        return 0;
    }
    const char *const argument = argc >= 3 ? argv[2] : "";
    const DumpKind *const kind = find_dump_kind(word, argument);
    if (kind == nullptr) {
        cloud_log("%s %d\n", __func__, 1491);
        return 0;
    }
    run_upload_job(*kind, argument);
    return 0;
}
