#include "tests/faults/exceptions.h"

#include <algorithm>

namespace reliability {
namespace {

bool is_beginning(const Upload &upload, const std::string &content) {
    return upload.status == 200 && upload.body.size() < content.size() &&
           content.compare(0, upload.body.size(), upload.body) == 0;
}

bool sends_itself(const Observation &observed, const Dump &dump) {
    return dump.staged.empty() && !observed.uploads.empty();
}

bool copy_was_cut_short(const Observation &observed, const Dump &dump) {
    const std::string &content = observed.before.at(dump.source);
    return !dump.staged.empty() && observed.disturbance.trouble == Trouble::call &&
           observed.disturbance.caller == Caller::command &&
           std::any_of(observed.uploads.begin(), observed.uploads.end(),
                       [&](const Upload &upload) { return is_beginning(upload, content); });
}

// "libssl.so.3 SSL_read"
bool is_in(const std::string &frame, const char *library, const std::string &function = "") {
    return frame.rfind(library, 0) == 0 && frame.size() >= function.size() &&
           frame.compare(frame.size() - function.size(), function.size(), function) == 0;
}

}  // namespace

const std::vector<AllowedLoss> &allowed_losses() {
    static const std::vector<AllowedLoss> list = {
        {"sent-itself",
         "upgradefailstate and debugRamLog send their source, which goes with any completed "
         "transfer whatever its status",
         sends_itself},
        {"copy-cut-short",
         "the result of the command that makes the copy under /tmp is not tested: a copy cut short "
         "by a full disk is sent, and the source removed",
         copy_was_cut_short},
    };
    return list;
}

// libcurl 7.88 remembers that the socket was not ready. If a later call of libssl fails before it
// uses the socket, because an allocation fails inside it, libcurl takes that for the same answer and
// repeats the call endlessly.
const char *known_library_fault(const RunResult &run) {
    if (!run.overdue)
        return nullptr;
    for (const std::string &frame : run.failed_frames) {
        if (is_in(frame, "libcurl") || is_in(frame, "kdump"))
            break;
        if (is_in(frame, "libssl", " SSL_read") || is_in(frame, "libssl", " SSL_write"))
            return "libssl-asked-without-end";
    }
    return nullptr;
}

}  // namespace reliability
