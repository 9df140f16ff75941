#include "cloud_http/file_upload.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "cloud_http/cloud_request.h"
#include "log/log.h"
#include "support/owned.h"

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

// What one attempt came to: a transfer (its libcurl code, and the status when the code is 0), or
// none.
struct Attempt {
    bool transferred;
    CURLcode code;
    long status;
};

CURLcode send(const Upload &upload, std::FILE *file, off_t size, long *status) noexcept {
    CloudRequest request(upload.url);
    Transfer &transfer = request.transfer();
    transfer.set_text(CURLOPT_CUSTOMREQUEST, "PUT");
    transfer.set_long(CURLOPT_UPLOAD, 1);
    transfer.set_pointer(CURLOPT_READDATA, file);
    transfer.set_size(CURLOPT_INFILESIZE_LARGE, size);
    transfer.set_long(CURLOPT_VERBOSE, 1);
    request.use_client_certificate();
    transfer.set_long(CURLOPT_FOLLOWLOCATION, 1);
    request.set_content_type("application/octet-stream");
    request.collect_reply();
    request.use_device_proxy(kFunction, 426);
    return request.perform(status);
}

Attempt attempt(const Upload &upload) noexcept {
    const OwnedFile file(std::fopen(upload.filename, "rb"));
    if (!file) {
        cloud_log("%s %d filename %s not found\n", kFunction, 383, upload.filename);
        return {false, CURLE_OK, 0};
    }
    struct stat status = {};
    if (fstat(fileno(file.get()), &status) != 0) {
        cloud_log("%s %d filename %s\n", kFunction, 388, upload.filename);
        return {false, CURLE_OK, 0};
    }
    cloud_log("%s %d filename %s uploadUrl %s file size %d flag %d\n", kFunction, 394,
              upload.filename, upload.url, static_cast<int>(status.st_size), upload.flag);
    Attempt result = {true, CURLE_OK, 0};
    result.code = send(upload, file.get(), status.st_size, &result.status);
    return result;
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
        const Attempt result = attempt(upload);
        if (!result.transferred) {
            return kFileError;
        }
        if (result.code == CURLE_OK) {
            return completed(upload, result.status);
        }
        cloud_log("%s %d curl_easy_perform() failed: %s\n\n", kFunction, 439,
                  curl_easy_strerror(result.code));
        if (flag == kNoRetry) {
            return result.code;
        }
        sleep(kRetrySeconds);
        if (flag == kLimitedRetry && ++failures == kMostFailures) {
            return result.code;
        }
        cloud_log("%s %d goto retry api_TFA_post_FILE %s\n\n", kFunction, 451, filename);
    }
}
