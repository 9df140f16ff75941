#include "device/firmware_upload_watch.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "base/owned.h"
#include "log/log.h"

using namespace cloudagent;

namespace {

constexpr const char *kMarker = "/tmp/Firmware_uploading.txt";
constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
constexpr const char *kFunction = "SN_Check_FW_upload_status";

enum Status : uint32_t { kNoUpload = 0, kUploading = 1, kOtherUploader = 2 };

constexpr int kLineSize = 256;
using Line = FixedText<kLineSize>;

bool contains(const char *text, const char *part) noexcept {
    return std::strstr(text, part) != nullptr;
}

bool read_marker(Line &line) noexcept {
    if (access(kMarker, R_OK) != 0) {
        return false;
    }
    const OwnedFile marker(std::fopen(kMarker, "r"));
    return marker && std::fgets(line.data(), kLineSize, marker.get()) != nullptr;
}

// Whether the upload uses plain HTTP; a line that names both ports means HTTPS.
bool uses_plain_http(const char *marker_line) noexcept {
    if (contains(marker_line, "[port: 443]")) {
        cloud_log("UPLOAD CGI Protocol HTTPS\n\n");
        return false;
    }
    const bool plain = contains(marker_line, "[port: 80]");
    if (plain) {
        cloud_log("UPLOAD CGI Protocol HTTP\n\n");
    }
    return plain;
}

void remove_upload_files() noexcept {
    unlink(kMarker);
    unlink(kProgress);
}

// Opens the status of the upload program; null, with the upload's files removed, when it is gone.
std::FILE *open_status(int pid) noexcept {
    Line path;
    path.format("/proc/%d", pid);
    const bool exists = access(path.c_str(), R_OK) == 0;
    path.append("/status");
    const bool readable = exists && access(path.c_str(), R_OK) == 0;
    std::FILE *const status = readable ? std::fopen(path.c_str(), "r") : nullptr;
    if (status == nullptr) {
        remove_upload_files();
    }
    if (!exists) {
        cloud_log("%s %d data.cgi %d is not exist\n", kFunction, 1686, pid);
    } else if (!readable) {
        cloud_log("/proc/%d/status not exist\n\n", pid);
    } else if (status == nullptr) {
        cloud_log("/proc/%d/status open fail\n\n", pid);
    }
    return status;
}

Status kill_stalled(int pid) noexcept {
    cloud_log("data.cgi pid %d not running kill\n\n", pid);
    if (kill(pid, SIGKILL) != 0) {
        cloud_log("data.cgi pid %d not running kill fail\n\n", pid);
        return kUploading;
    }
    remove_upload_files();
    cloud_log("data.cgi pid %d not running kill sucess\n\n", pid);
    return kNoUpload;
}

Status check_process(int pid, bool plain_http) noexcept {
    OwnedFile status(open_status(pid));
    bool is_data_cgi = false;
    bool is_stalled = false;
    char line[kLineSize];
    while (status && std::fgets(line, kLineSize, status.get()) != nullptr) {
        is_data_cgi |= contains(line, "Name:") && contains(line, "data.cgi");
        is_stalled |= plain_http && contains(line, "State:") && !contains(line, "running");
    }
    status.reset();
    if (!is_data_cgi) {
        return kNoUpload;
    }
    if (!is_stalled) {
        cloud_log("%s %d data.cgi %d is uploading image\n", kFunction, 1668, pid);
        return kUploading;
    }
    return kill_stalled(pid);
}

}  // namespace

uint32_t SN_Check_FW_upload_status() noexcept {
    constexpr const char *kDataCgi = "Uploading by data.cgi pid:";
    Line line;
    if (!read_marker(line)) {
        return kNoUpload;
    }
    const bool plain_http = uses_plain_http(line.c_str());
    if (const char *found = std::strstr(line.c_str(), kDataCgi)) {
        const long id =
            std::strtol(found + std::strlen(kDataCgi), nullptr, 10);  // 0 without digits
        const int pid = static_cast<int>(std::clamp<long>(id, INT_MIN, INT_MAX));
        cloud_log("data.cgi pid %d \n\n", pid);
        return pid > 0 ? check_process(pid, plain_http) : kNoUpload;
    }
    if (contains(line.c_str(), "Uploading by ")) {
        unlink(kProgress);
        cloud_log("%s %d %s\n", __func__, 1693, line.c_str());
        return kOtherUploader;
    }
    return kNoUpload;
}
