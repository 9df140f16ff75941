#include "runners.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <thread>

#include "files.h"

namespace {

constexpr std::chrono::seconds kPatience{15};
constexpr std::chrono::microseconds kBetweenLooks{300};
constexpr const char *kMeetingPoint = "/run/world/meeting";

// In the new process, which has only this thread.
[[noreturn]] void become(int gate, const std::vector<char *> &words) {
    char nothing;
    if (read(gate, &nothing, 1) < 0)  // 0 when the gate opens
        _exit(126);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);  // the names that tar lists
    dup2(nowhere, STDERR_FILENO);  // the trace of the uploads
    setenv("MEETING_POINT", kMeetingPoint, 1);
    setenv("LD_PRELOAD", MEETING_POINT_LIBRARY, 1);
    setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    execv(words[0], words.data());
    _exit(127);
}

}  // namespace

Runners::Runners(const std::vector<std::vector<std::string>> &commands) {
    int gate[2];
    if (pipe2(gate, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const uint32_t come_and_expected[] = {0, static_cast<uint32_t>(commands.size())};
    world::write_file(kMeetingPoint, {reinterpret_cast<const char *>(come_and_expected),
                                      sizeof come_and_expected});
    for (const auto &command : commands) {
        std::vector<char *> words;
        for (const std::string &word : command)
            words.push_back(const_cast<char *>(word.c_str()));
        words.push_back(nullptr);
        const pid_t process = fork();
        if (process == 0) {
            close(gate[1]);
            become(gate[0], words);
        }
        running_.push_back(process);
    }
    close(gate[0]);
    gate_ = gate[1];
}

Runners::~Runners() {
    for (const pid_t process : running_) {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
}

void Runners::start() { close(gate_); }

std::size_t Runners::wait_for(std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (ended_ < count && std::chrono::steady_clock::now() < end) {
        int status = 0;
        const pid_t process = waitpid(-1, &status, WNOHANG);
        if (process > 0) {
            running_.erase(std::find(running_.begin(), running_.end(), process));
            ++ended_;
            failed_ += status != 0;
        } else {
            std::this_thread::sleep_for(kBetweenLooks);
        }
    }
    return ended_;
}
