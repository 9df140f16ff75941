#include "tests/faults/exceptions.h"

#include <algorithm>

namespace reliability {
namespace {

bool any_upload(const Observation &observed, bool (*fits)(const Upload &, const std::string &),
                const std::string &content) {
    return std::any_of(observed.uploads.begin(), observed.uploads.end(),
                       [&](const Upload &upload) { return fits(upload, content); });
}

bool completed(const Upload &, const std::string &) { return true; }

bool is_beginning(const Upload &upload, const std::string &content) {
    return upload.status == 200 && upload.body.size() < content.size() &&
           content.compare(0, upload.body.size(), upload.body) == 0;
}

bool sends_itself(const Observation &observed, const Dump &dump) {
    return dump.staged.empty() && any_upload(observed, completed, "");
}

bool copy_was_cut_short(const Observation &observed, const Dump &dump) {
    return !dump.staged.empty() && observed.disturbance.trouble == Trouble::call &&
           observed.disturbance.caller == Caller::command &&
           any_upload(observed, is_beginning, observed.before.at(dump.source));
}

}  // namespace

const std::vector<Exception> &losses_by_design() {
    static const std::vector<Exception> list = {
        {"sent-itself",
         "upgradefailstate and debugRamLog send their source, which goes with any completed "
         "transfer whatever its status",
         sends_itself},
    };
    return list;
}

const std::vector<Exception> &forced_losses() {
    static const std::vector<Exception> list = {
        {"copy-cut-short",
         "the result of the command that makes the copy under /tmp is not tested: a copy cut short "
         "by a full disk is sent, and the source removed",
         copy_was_cut_short},
    };
    return list;
}

// libcurl 7.88 remembers that the socket was not ready. If a later call of libssl fails before it
// uses the socket, libcurl takes that for the same answer and repeats the call.
#define REPEATED_WITHOUT_END                                                                  \
    "an allocation that fails inside this function is taken for a socket that is not ready: " \
    "libcurl "                                                                                \
    "repeats the call endlessly"

const std::vector<LibraryFault> &library_faults() {
    static const std::vector<LibraryFault> list = {
        {"libssl-asked-without-end", /*is_overdue=*/true, "libssl", "SSL_read",
         REPEATED_WITHOUT_END},
        {"libssl-asked-without-end", /*is_overdue=*/true, "libssl", "SSL_write",
         REPEATED_WITHOUT_END},
    };
    return list;
}

const LibraryFault *known_fault(const RunResult &run) {
    const auto &frames = run.overdue ? run.failed_frames : run.fault_frames;
    const auto of = [](const std::string &frame, const char *library) {
        return frame.rfind(library, 0) == 0;
    };
    const auto program = std::find_if(frames.begin(), frames.end(), [&](const std::string &frame) {
        return of(frame, "libcurl") || of(frame, "kdump");
    });
    for (const LibraryFault &fault : library_faults()) {
        const std::string function = std::string(" ") + fault.function;
        const auto is_there = [&](const std::string &frame) {
            return of(frame, fault.library) && frame.size() > function.size() &&
                   frame.compare(frame.size() - function.size(), function.size(), function) == 0;
        };
        if (fault.is_overdue == run.overdue && std::any_of(frames.begin(), program, is_there))
            return &fault;
    }
    return nullptr;
}

}  // namespace reliability
