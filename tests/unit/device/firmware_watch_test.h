// Looks at a firmware upload by a real process, and notes the signals that are sent.
#pragma once

#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "device/firmware_upload_watch.h"
#include "testing/logged_test.h"
#include "testing/spawn.h"

enum class State : char { sleeping = 'S', running = 'R', stopped = 'T', ended = 'Z' };

// A process of that name and state, as /proc shows them; an ended one is not yet collected.
class UploadProgram {
  public:
    explicit UploadProgram(const std::string &name = "data.cgi", State state = State::sleeping)
        : child_(world::spawn(world::Command([&] { return pose_as(name.c_str(), state); }))),
          pid_(child_.pid()) {
        if (state == State::ended) {
            await(name, State::sleeping);
            child_.kill(SIGKILL);
        }
        await(name, state);
    }

    int pid() const { return pid_; }

    // Waits for its end.
    bool was_killed() { return child_.wait().signal == SIGKILL; }

    // Ends it and collects it: its id is free from now on.
    void end() {
        child_.kill(SIGKILL);
        child_.wait();
    }

  private:
    static int pose_as(const char *name, State state) {
        prctl(PR_SET_NAME, name);
        if (state == State::stopped) {
            raise(SIGSTOP);
        }
        for (volatile unsigned turns = 0;; turns = turns + 1) {
            if (state != State::running) {
                pause();
            }
        }
    }

    void await(const std::string &name, State state) const {
        const std::string status = "/proc/" + std::to_string(pid_) + "/status";
        const std::string wanted = std::string("State:\t") + static_cast<char>(state);
        for (int tries = 0; tries < 5000; ++tries) {
            const std::string shown = world::read_file_if_any(status);
            if (shown.find("Name:\t" + name + "\n") == 0 &&
                shown.find(wanted) != std::string::npos) {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        throw std::runtime_error(name + " does not start");
    }

    world::Child child_;
    const int pid_;
};

class FirmwareWatchTest : public LoggedTest {
  protected:
    // Both files of an upload, its marker with this content; then a look at it.
    uint32_t watch(const std::string &marker) {
        world::write_file(kMarker, marker);
        world::write_file(kProgress, "50");
        console.clear();
        sent_signals.clear();
        calls::seen<kill>() = [this](int pid, int number) {
            sent_signals.push_back({pid, number});
        };
        if (refuses_signals) {
            calls::answer<kill>() = [](int, int) {
                errno = EPERM;
                return -1;
            };
        }
        const uint32_t result = SN_Check_FW_upload_status();
        calls::seen<kill>() = nullptr;
        calls::answer<kill>() = nullptr;
        return result;
    }

    std::vector<std::pair<int, int>> sent_signals;  // of the last watch()
    bool refuses_signals = false;                   // as kill() does for another user's process

    // Which of the two files are left.
    static std::string left() {
        return std::string(world::exists(kMarker) ? "marker " : "") +
               (world::exists(kProgress) ? "progress" : "");
    }

    static std::string marker_of(int pid, const std::string &before = "") {
        return before + "Uploading by data.cgi pid: " + std::to_string(pid) + "\n";
    }

    static constexpr const char *kMarker = "/tmp/Firmware_uploading.txt";
    static constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
    static constexpr const char *kBoth = "marker progress";
};
