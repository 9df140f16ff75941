#include "tests/faults/invariants.h"

#include <sys/wait.h>

#include <algorithm>
#include <csignal>

#include "tests/faults/exceptions.h"

namespace reliability {
namespace {

const std::string *find(const Files &files, const std::string &path) {
    const auto found = files.find(path);
    return found == files.end() ? nullptr : &found->second;
}

bool in_cloud(const std::vector<Upload> &uploads, const std::string &content) {
    return std::any_of(uploads.begin(), uploads.end(), [&](const Upload &upload) {
        return upload.status == 200 && upload.body == content;
    });
}

// Whether a file may differ after a run of this kind.
enum class Change { none, removal, any };

Change allowed_change(const Kind &kind, const std::string &path) {
    constexpr const char *kPinningSwitch = "/mnt/data/iss_config/current_config/cloud_DetectDNS";
    if (path == kPinningSwitch || path == kind.marker || path == kind.copied)
        return Change::any;
    for (const Dump &dump : kind.dumps) {
        if (path == dump.source)
            return Change::removal;
        if (path == dump.staged)
            return Change::any;
    }
    return Change::none;
}

class Check {
  public:
    explicit Check(const Observation &observed) : observed_(observed), kind_(*observed.kind) {}

    void ending() {
        const RunResult &run = observed_.run;
        if (run.killed || (run.gave_up && kind_.retries_forever))
            return;
        if (!run.overdue && WIFEXITED(run.status)) {
            if (WEXITSTATUS(run.status) != 0)
                violate("exit status " + std::to_string(WEXITSTATUS(run.status)));
        } else if (const char *const fault = known_library_fault(run)) {
            except(fault);
        } else {
            violate(
                (run.overdue ? "did not end" : "signal " + std::to_string(WTERMSIG(run.status))) +
                frames());
        }
    }

    void dumps() {
        for (const Dump &dump : kind_.dumps) {
            const std::string *const before = find(observed_.before, dump.source);
            const std::string *const after = find(observed_.after, dump.source);
            if (before == nullptr || after != nullptr || in_cloud(observed_.uploads, *before))
                continue;
            const auto allowed = std::find_if(
                allowed_losses().begin(), allowed_losses().end(),
                [&](const AllowedLoss &loss) { return loss.applies(observed_, dump); });
            if (allowed != allowed_losses().end()) {
                except(allowed->name);
                continue;
            }
            ++verdict_.lost;
            violate("lost " + dump.source);
        }
    }

    void marker() {
        const bool stays = find(observed_.after, kind_.marker) != nullptr;
        const bool is_removal_disturbed = observed_.run.path == kind_.marker;
        const bool ended_itself = WIFEXITED(observed_.run.status) && !observed_.run.killed;
        if (stays && ended_itself && !is_removal_disturbed)
            violate("the marker stays");
    }

    void other_files() {
        for (const auto &[path, content] : observed_.before) {
            const std::string *const after = find(observed_.after, path);
            const Change allowed = allowed_change(kind_, path);
            if (allowed == Change::none && after == nullptr)
                violate("removed " + path);
            if (allowed != Change::any && after != nullptr && *after != content)
                violate("changed " + path);
        }
        for (const auto &[path, content] : observed_.after)
            if (find(observed_.before, path) == nullptr &&
                allowed_change(kind_, path) != Change::any)
                violate("created " + path);
        for (const std::string &path : observed_.run.changed)
            if (path.rfind("/dev/", 0) != 0 && path.rfind("/run/world/", 0) != 0 &&
                allowed_change(kind_, path) == Change::none)
                violate("touched " + path);
    }

    void nothing_touched() {
        if (observed_.after != observed_.before)
            violate("a busy run changed files");
        if (!observed_.uploads.empty())
            violate("a busy run sent something");
        if (observed_.console.find(kind_.marker + " already processing") == std::string::npos)
            violate("a busy run did not say so");
    }

    Verdict verdict() { return std::move(verdict_); }

  private:
    void violate(const std::string &what) { verdict_.violations.push_back(what); }
    void except(const char *name) { verdict_.exceptions.push_back(name); }

    std::string frames() const {
        std::string text;
        for (const std::string &frame : observed_.run.failed_frames)
            text += "\n    allocation failed in " + frame;
        for (const std::string &frame : observed_.run.fault_frames)
            text += "\n    in " + frame;
        return text;
    }

    const Observation &observed_;
    const Kind &kind_;
    Verdict verdict_;
};

}  // namespace

Verdict check(const Observation &observed) {
    Check check(observed);
    check.ending();
    check.dumps();
    check.marker();
    check.other_files();
    return check.verdict();
}

Verdict check_busy(const Observation &observed) {
    Check check(observed);
    check.ending();
    check.nothing_touched();
    return check.verdict();
}

std::vector<std::string> missing_in_cloud(const Kind &kind, const Files &files,
                                          const std::vector<Upload> &uploads) {
    std::vector<std::string> missing;
    for (const Dump &dump : kind.dumps)
        if (!in_cloud(uploads, files.at(dump.source)))
            missing.push_back(dump.source);
    if (!kind.sends_archive)
        return missing;
    constexpr const char *kFolder = "/mnt/data/iss_config/current_config/";
    for (const auto &[path, content] : files) {
        const auto holds = [&text = content](const Upload &upload) {
            return upload.body.find(text) != std::string::npos;
        };
        if (path.rfind(kFolder, 0) == 0 && std::none_of(uploads.begin(), uploads.end(), holds))
            missing.push_back(path);
    }
    return missing;
}

}  // namespace reliability
