#include "device/firmware_upload_watch.h"

#include <unistd.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log/log.h"
#include "support/fixed_text.h"
#include "support/owned.h"

namespace {

constexpr const char *kMarker = "/tmp/Firmware_uploading.txt";
constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
constexpr const char *kFunction = "SN_Check_FW_upload_status";

enum Status : uint32_t { kNoUpload = 0, kUploading = 1, kOtherUploader = 2 };

constexpr int kHttpsPort = 443;
constexpr int kHttpPort = 80;
constexpr int kUnknownPort = -1;

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

int protocol_port(const char *marker_line) noexcept {
    if (contains(marker_line, "[port: 443]")) {
        cloud_log("UPLOAD CGI Protocol HTTPS\n\n");
        return kHttpsPort;
    }
    if (contains(marker_line, "[port: 80]")) {
        cloud_log("UPLOAD CGI Protocol HTTP\n\n");
        return kHttpPort;
    }
    return kUnknownPort;
}

// Text without digits gives 0; an id beyond int gives the nearest, which no process has.
int process_id(const char *text) noexcept {
    return static_cast<int>(std::clamp<long>(std::strtol(text, nullptr, 10), INT_MIN, INT_MAX));
}

void remove_upload_files() noexcept {
    unlink(kMarker);
    unlink(kProgress);
}

struct Program {
    bool is_data_cgi = false;
    bool is_stalled = false;  // examined on plain HTTP only
};

Program read_program(std::FILE *status, int port) noexcept {
    Program program;
    char line[kLineSize];
    while (std::fgets(line, kLineSize, status) != nullptr) {
        if (contains(line, "Name:") && contains(line, "data.cgi")) {
            program.is_data_cgi = true;
        }
        if (port == kHttpPort && contains(line, "State:") && !contains(line, "running")) {
            program.is_stalled = true;
        }
    }
    return program;
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

Status check_process(int pid, int port) noexcept {
    Line path;
    path.format("/proc/%d", pid);
    if (access(path.c_str(), R_OK) != 0) {
        remove_upload_files();
        cloud_log("%s %d data.cgi %d is not exist\n", kFunction, 1686, pid);
        return kNoUpload;
    }
    path.format("/proc/%d/status", pid);
    if (access(path.c_str(), R_OK) != 0) {
        remove_upload_files();
        cloud_log("/proc/%d/status not exist\n\n", pid);
        return kNoUpload;
    }
    Program program;
    {
        const OwnedFile status(std::fopen(path.c_str(), "r"));
        if (!status) {
            remove_upload_files();
            cloud_log("/proc/%d/status open fail\n\n", pid);
            return kNoUpload;
        }
        program = read_program(status.get(), port);
    }
    if (!program.is_data_cgi) {
        return kNoUpload;
    }
    if (!program.is_stalled) {
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
    const int port = protocol_port(line.c_str());
    if (const char *found = std::strstr(line.c_str(), kDataCgi)) {
        const int pid = process_id(found + std::strlen(kDataCgi));
        cloud_log("data.cgi pid %d \n\n", pid);
        return pid > 0 ? check_process(pid, port) : kNoUpload;
    }
    if (contains(line.c_str(), "Uploading by ")) {
        unlink(kProgress);
        cloud_log("%s %d %s\n", kFunction, 1693, line.c_str());
        return kOtherUploader;
    }
    return kNoUpload;
}
