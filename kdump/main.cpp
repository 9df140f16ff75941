// kdump KIND [ARG]: uploads one kind of diagnostic dump. Always exits 0; the log shows failures.
#include <cstdio>
#include <cstdlib>

#include "cloud_http/upload_url.h"
#include "kdump/upload_job.h"
#include "log/log.h"
#include "state/state_files.h"

using namespace cloudagent;

namespace {

// Settings come from files and the local service only, but libraries and tools read these.
constexpr const char *kForgottenVariables[] = {
    // libcurl
    "http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY", "no_proxy", "NO_PROXY",
    "SSLKEYLOGFILE",
    // c-ares
    "CARES_HOSTS", "HOSTALIASES", "LOCALDOMAIN", "RES_OPTIONS",
    // OpenSSL
    "OPENSSL_CONF", "OPENSSL_CONF_INCLUDE", "OPENSSL_ENGINES", "OPENSSL_MODULES", "SSL_CERT_DIR",
    "SSL_CERT_FILE", "CTLOG_FILE", "RANDFILE",
    // shell, tar, cp
    "ENV", "BASH_ENV", "SHELLOPTS", "BASHOPTS", "TAR_OPTIONS", "TAPE", "RSH", "TMPDIR",
    "POSIXLY_CORRECT", "VERSION_CONTROL", "SIMPLE_BACKUP_SUFFIX"};

}  // namespace

int main(int argc, char **argv) {
    // libcurl writes a line of its trace in pieces; line buffering makes that one write.
    static char trace_lines[1024];
    (void)std::setvbuf(stderr, trace_lines, _IOLBF, sizeof trace_lines);
    for (const char *variable : kForgottenVariables) {
        unsetenv(variable);
    }
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
