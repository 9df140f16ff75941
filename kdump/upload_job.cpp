#include "kdump/upload_job.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "cloud_http/file_upload.h"
#include "cloud_http/upload_url.h"
#include "kdump/job_guard.h"
#include "log/log.h"
#include "support/fixed_text.h"

namespace {

constexpr const char *kSpeaker = kProgramSpeaker;
constexpr int kMostRequests = 4;
constexpr unsigned kRequestPauseSeconds = 10;

using WorkBuffer = FixedText<256>;  // a shell command or the request body

void release_upload_url() noexcept {
    std::free(g_upload_url);
    g_upload_url = nullptr;
}

void remove_file(const char *path, int site) noexcept {
    if (unlink(path) == 0) {
        cloud_log("%s %d unlink %s\n\n", kSpeaker, site, path);
    }
}

void run_command(const char *command) noexcept {
    // NOLINTNEXTLINE(cert-env33-c): a row's command is shell text
    [[maybe_unused]] const int result = std::system(command);
}

// A reply without a URL leaves the earlier one in use, so that is freed only once it is replaced.
bool request_upload_url(const char *body) noexcept {
    for (int tries = 1;; ++tries) {
        char *const earlier = g_upload_url;
        const int result = api_TFA_post_data(body);
        if (g_upload_url != earlier) {
            std::free(earlier);
        }
        if (result == 0) {
            return true;
        }
        if (tries == kMostRequests) {
            return false;
        }
        sleep(kRequestPauseSeconds);
    }
}

// In a shared /tmp somebody else can have put a link, a file or a FIFO at the copy's place, and the
// copy would follow it out of /tmp, or become theirs. This user's own file or FIFO stays.
void clear_place_of_copy(const DumpFile &file, const char *argument) noexcept {
    if (file.uploaded == nullptr && std::strchr(argument, '/') != nullptr) {
        return;  // not a place in /tmp itself
    }
    WorkBuffer place;
    place.format(file.uploaded != nullptr ? file.uploaded : "/tmp/%s", argument);
    struct stat found = {};
    if (lstat(place.c_str(), &found) != 0 || S_ISDIR(found.st_mode)) {
        return;
    }
    if (S_ISLNK(found.st_mode) || found.st_uid != geteuid()) {
        unlink(place.c_str());
    }
}

void stage(const DumpFile &file, const char *argument, WorkBuffer &work) noexcept {
    work.format(file.staging_command, argument, argument);
    if (file.sites.command != 0) {
        cloud_log("%s %d cmd %s\n", kSpeaker, file.sites.command, work.c_str());
    }
    clear_place_of_copy(file, argument);
    run_command(work.c_str());
}

void format_body(const DumpFile &file, const char *argument, WorkBuffer &work) noexcept {
    WorkBuffer name;
    name.format(file.json_name, argument);
    work.format(R"({"filename": "%s"})", name.c_str());
    if (file.sites.body != 0) {
        cloud_log("%s %d cmd %s\n", kSpeaker, file.sites.body, work.c_str());
    }
}

void log_requested(const DumpFile &file) noexcept {
    if (file.requested_names_source) {
        cloud_log("%s %d api_TFA_post %s finish\n", kSpeaker, file.sites.requested, file.source);
    } else {
        cloud_log("%s %d api_TFA_post finish\n", kSpeaker, file.sites.requested);
    }
}

void upload(const DumpFile &file, const char *work) noexcept {
    const char *const path = file.uploaded != nullptr ? file.uploaded : work;
    if (api_TFA_post_FILE(path, g_upload_url, file.flag) != 0) {
        cloud_log("%s %d post %s fail\n\n", kSpeaker, file.sites.upload_failed,
                  file.named_in_failure != nullptr ? file.named_in_failure : work);
        release_upload_url();  // a next file must not be sent to a URL that has failed
        return;
    }
    remove_file(file.removed != nullptr ? file.removed : work, file.sites.removed);
    if (file.reboots_after_upgrade && access("/tmp/upgrade_finish", F_OK) == 0) {
        run_command("reboot;");
    }
}

// False when no upload URL could be had, which ends the job.
bool send_file(const DumpKind &kind, const DumpFile &file, const char *argument) noexcept {
    if (file.source != nullptr && access(file.source, F_OK) != 0) {
        return true;
    }
    if (file.sites.early != 0) {
        cloud_log("%s %d api_TFA_post finish\n", kSpeaker, file.sites.early);
    }
    WorkBuffer work;
    if (file.staging == Staging::kBeforeRequest) {
        stage(file, argument, work);
    }
    format_body(file, argument, work);
    if (!request_upload_url(work.c_str())) {
        cloud_log("%s %d post data fail\n\n", kSpeaker, file.sites.request_failed);
        remove_file(kind.marker, file.sites.marker_removed);
        return false;
    }
    log_requested(file);
    if (file.staging == Staging::kAfterRequest) {
        stage(file, argument, work);
    }
    upload(file, work.c_str());
    return true;
}

void end_job(const DumpKind &kind) noexcept {
    release_upload_url();
    if (unlink(kind.marker) != 0) {
        if (kind.sites.marker_kept != 0) {
            cloud_log("%s %d unlink %s Fail\n\n", kSpeaker, kind.sites.marker_kept, kind.marker);
        }
    } else if (kind.sites.marker_removed != 0) {
        cloud_log("%s %d unlink %s\n\n", kSpeaker, kind.sites.marker_removed, kind.marker);
    }
    if (kind.sites.end != 0) {
        cloud_log("%s %d\n", kSpeaker, kind.sites.end);
    }
}

}  // namespace

void run_upload_job(const DumpKind &kind, const char *argument) noexcept {
    cloud_log("%s %d %s\n\n", kSpeaker, kind.sites.announced, kind.word);
    if (start_processing(kind.marker) == 1) {
        cloud_log("%s %d %s already processing, exit\n\n", kSpeaker, kind.sites.busy, kind.marker);
        return;
    }
    for (const DumpFile *file : kind.files) {
        if (file != nullptr && !send_file(kind, *file, argument)) {
            return;
        }
    }
    end_job(kind);
}
