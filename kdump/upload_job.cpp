#include "kdump/upload_job.h"

#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"
#include "cloud_http/file_upload.h"
#include "cloud_http/upload_url.h"
#include "kdump/job_guard.h"
#include "log/log.h"

namespace cloudagent {
namespace {

constexpr const char *kFunction = "main";
constexpr int kMostRequests = 4;
constexpr unsigned kRequestPauseSeconds = 10;

using WorkBuffer = FixedText<256>;  // a shell command or the request body

void release_upload_url() noexcept {
    std::free(g_upload_url);
    g_upload_url = nullptr;
}

void remove_file(const char *path, int id) noexcept {
    if (unlink(path) == 0) {
        cloud_log("%s %d unlink %s\n\n", kFunction, id, path);
    }
}

// A reply without a URL leaves the earlier one in use; a new one replaces it.
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

bool has(const DumpFile &file, FileOption option) noexcept { return (file.options & option) != 0; }

// In a shared /tmp another user may have put a link, a file or a FIFO at the copy's place: cp would
// follow it out of /tmp or write into their file. What this user put there stays, links too.
void clear_place_of_copy(const char *copy) noexcept {
    struct stat found = {};
    if (lstat(copy, &found) == 0 && found.st_uid != geteuid()) {
        unlink(copy);
    }
}

void make_copy(const DumpFile &file, const char *argument, WorkBuffer &work) noexcept {
    WorkBuffer dump;
    WorkBuffer copy;
    dump.format(file.dump, argument);
    copy.format(file.copy, argument);
    work.format(file.command, dump.c_str(), copy.c_str());
    if (file.ids.command != 0) {
        cloud_log("%s %d cmd %s\n", kFunction, file.ids.command, work.c_str());
    }
    if (std::strrchr(copy.c_str(), '/') == copy.c_str() + std::strlen("/tmp")) {
        clear_place_of_copy(copy.c_str());
    }
    // NOLINTNEXTLINE(cert-env33-c): a row's command is shell text
    [[maybe_unused]] const int result = std::system(work.c_str());
}

void format_body(const DumpFile &file, const char *argument, WorkBuffer &work) noexcept {
    WorkBuffer name;
    name.format(file.name, argument);
    work.format(R"({"filename": "%s"})", name.c_str());
    if (file.ids.body != 0) {
        cloud_log("%s %d cmd %s\n", kFunction, file.ids.body, work.c_str());
    }
}

// At a reboot init terminates every process at once, and kills it a second later: go on to the end
// of the job. Unlike an ignored signal, a caught one is not inherited by the command.
void outlive_termination() noexcept {
    struct sigaction action = {};
    sigaction(SIGTERM, nullptr, &action);
    if (action.sa_handler != SIG_IGN) {
        action = {};
        action.sa_handler = [](int) {};
        action.sa_flags = SA_RESTART;
        sigaction(SIGTERM, &action, nullptr);
    }
}

void upload(const DumpFile &file, const char *work) noexcept {
    const char *const dump = has(file, kSendsCommand) ? work : file.dump;
    const char *const copy = has(file, kSendsCommand) ? work : file.copy;
    if (api_TFA_post_FILE(copy, g_upload_url, file.flag) != 0) {
        cloud_log("%s %d post %s fail\n\n", kFunction, file.ids.upload_failed,
                  has(file, kFailureNamesCopy) ? copy : dump);
        release_upload_url();  // the next file must not go to a URL that has failed
        return;
    }
    remove_file(dump, file.ids.removed);
    if (has(file, kRebootAfterUpgrade) && access("/tmp/upgrade_finish", F_OK) == 0) {
        outlive_termination();
        // NOLINTNEXTLINE(cert-env33-c): the device's shell knows the command
        [[maybe_unused]] const int result = std::system("reboot;");
    }
}

// False when the URL request failed, which ends the job.
bool send_file(const DumpKind &kind, const DumpFile &file, const char *argument) noexcept {
    if (has(file, kMayBeAbsent) && access(file.dump, F_OK) != 0) {
        return true;
    }
    if (file.ids.early != 0) {
        cloud_log("%s %d api_TFA_post finish\n", kFunction, file.ids.early);
    }
    WorkBuffer work;
    const bool copies = file.command != nullptr;
    if (copies && has(file, kCopyFirst)) {
        make_copy(file, argument, work);
    }
    format_body(file, argument, work);
    if (!request_upload_url(work.c_str())) {
        cloud_log("%s %d post data fail\n\n", kFunction, file.ids.request_failed);
        remove_file(kind.marker, file.ids.marker_removed);
        return false;
    }
    if (has(file, kRequestNamesDump)) {
        cloud_log("%s %d api_TFA_post %s finish\n", kFunction, file.ids.requested, file.dump);
    } else {
        cloud_log("%s %d api_TFA_post finish\n", kFunction, file.ids.requested);
    }
    if (copies && !has(file, kCopyFirst)) {
        make_copy(file, argument, work);
    }
    upload(file, work.c_str());
    return true;
}

void end_job(const DumpKind &kind) noexcept {
    release_upload_url();
    const bool removed = unlink(kind.marker) == 0;
    if (removed && kind.ids.marker_removed != 0) {
        cloud_log("%s %d unlink %s\n\n", kFunction, kind.ids.marker_removed, kind.marker);
    }
    if (!removed && kind.ids.marker_kept != 0) {
        cloud_log("%s %d unlink %s Fail\n\n", kFunction, kind.ids.marker_kept, kind.marker);
    }
    if (kind.ids.end != 0) {
        cloud_log("%s %d\n", kFunction, kind.ids.end);
    }
}

}  // namespace

void run_upload_job(const DumpKind &kind, const char *argument) noexcept {
    cloud_log("%s %d %s\n\n", kFunction, kind.ids.announced, kind.word);
    if (start_processing(kind.marker) == 1) {
        cloud_log("%s %d %s already processing, exit\n\n", kFunction, kind.ids.busy, kind.marker);
        return;
    }
    for (const DumpFile &file : kind.files) {
        if (file.name != nullptr && !send_file(kind, file, argument)) {
            return;
        }
    }
    end_job(kind);
}

}  // namespace cloudagent
