#include "cloud_http/file_upload.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "base/owned.h"
#include "cloud_http/proxy.h"
#include "cloud_http/request.h"
#include "log/log.h"

using namespace cloudagent;

namespace {

constexpr const char *kFunction = "api_TFA_post_FILE";
constexpr int kFileError = 1;
constexpr int kNoRetry = 0;
constexpr int kLimitedRetry = 1;
constexpr int kMostFailures = 3;
constexpr unsigned kRetrySeconds = 10;

struct Upload {
    const char *filename;
    const char *url;
    int flag;
};

CURLcode send(const Upload &upload, std::FILE *file, off_t size, long *status) noexcept {
    Request request(upload.url);
    request.set_text(CURLOPT_CUSTOMREQUEST, "PUT");
    request.set_long(CURLOPT_UPLOAD, 1);
    request.set_pointer(CURLOPT_READDATA, file);
    request.set_size(CURLOPT_INFILESIZE_LARGE, size);
    request.set_long(CURLOPT_VERBOSE, 1);
    request.use_client_certificate();
    request.set_long(CURLOPT_FOLLOWLOCATION, 1);
    request.set_content_type("application/octet-stream");
    request.collect_reply();
    if (c_cloud_proxy_get(g_proxy_server) == 0) {
        cloud_log("\n%s %d g_proxy_server \"%s\"\n\n", kFunction, 426, g_proxy_server);
        request.use_proxy(g_proxy_server);
    }
    return request.perform_to_cloud(status);
}

// One attempt: libcurl's code and, when that is 0, the status. False when the file cannot be read.
bool attempt(const Upload &upload, CURLcode *code, long *status) noexcept {
    const OwnedFile file(std::fopen(upload.filename, "rb"));
    if (!file) {
        cloud_log("%s %d filename %s not found\n", kFunction, 383, upload.filename);
        return false;
    }
    struct stat found = {};
    if (fstat(fileno(file.get()), &found) != 0) {
        cloud_log("%s %d filename %s\n", kFunction, 388, upload.filename);
        return false;
    }
    cloud_log("%s %d filename %s uploadUrl %s file size %d flag %d\n", kFunction, 394,
              upload.filename, upload.url, static_cast<int>(found.st_size), upload.flag);
    *code = send(upload, file.get(), found.st_size, status);
    return true;
}

int completed(const Upload &upload, long status) noexcept {
    if (unlink(upload.filename) == 0) {
        cloud_log("%s %d unlink %s\n\n", kFunction, 458, upload.filename);
    }
    if (status != kHttpOk) {
        cloud_log("%s %d HTTP error %d\n\n", kFunction, 462, static_cast<int>(status));
        return static_cast<int>(status);
    }
    cloud_log("%s %d curl_easy_perform() OK\n\n", kFunction, 467);
    return 0;
}

}  // namespace

int api_TFA_post_FILE(const char *filename, const char *uploadUrl, int flag) noexcept {
    const Upload upload = {filename, uploadUrl, flag};
    int failures = 0;
    for (;;) {
        CURLcode code = CURLE_OK;
        long status = 0;
        if (!attempt(upload, &code, &status)) {
            return kFileError;
        }
        if (code == CURLE_OK) {
            return completed(upload, status);
        }
        cloud_log("%s %d curl_easy_perform() failed: %s\n\n", __func__, 439,
                  curl_easy_strerror(code));
        if (flag == kNoRetry) {
            return code;
        }
        sleep(kRetrySeconds);
        if (flag == kLimitedRetry && ++failures == kMostFailures) {
            return code;
        }
        cloud_log("%s %d goto retry api_TFA_post_FILE %s\n\n", __func__, 451, filename);
    }
}
