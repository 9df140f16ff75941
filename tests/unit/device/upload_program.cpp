#include "upload_program.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <stdexcept>

#include "testing/files.h"

namespace {

void wait_a_moment() {
    const timespec moment = {0, 1000000};
    nanosleep(&moment, nullptr);
}

[[noreturn]] int pose_as(const char *name, UploadProgram::State state) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NAME, name);
    switch (state) {
        case UploadProgram::State::running:
            for (volatile unsigned turns = 0;; turns = turns + 1) {
            }
        case UploadProgram::State::stopped:
            kill(getpid(), SIGSTOP);
            break;
        case UploadProgram::State::ended:
        case UploadProgram::State::sleeping:
            break;
    }
    for (;;) {
        pause();
    }
}

char letter_of(UploadProgram::State state) {
    switch (state) {
        case UploadProgram::State::running:
            return 'R';
        case UploadProgram::State::stopped:
            return 'T';
        case UploadProgram::State::ended:
            return 'Z';
        case UploadProgram::State::sleeping:
            break;
    }
    return 'S';
}

}  // namespace

UploadProgram::UploadProgram(const std::string &name, State state)
    : child_(world::spawn(world::Command([&] { return pose_as(name.c_str(), state); }))),
      pid_(child_.pid()) {
    if (state == State::ended) {
        await(name, 'S');
        kill(pid_, SIGKILL);
    }
    await(name, letter_of(state));
}

void UploadProgram::await(const std::string &name, char state) const {
    const std::string status = "/proc/" + std::to_string(pid_) + "/status";
    const std::string wanted_name = "Name:\t" + name + "\n";
    const std::string wanted_state = std::string("State:\t") + state;
    for (int tries = 0; tries < 5000; ++tries) {
        const std::string shown = world::read_file_if_any(status);
        if (shown.find(wanted_name) == 0 && shown.find(wanted_state) != std::string::npos) {
            return;
        }
        wait_a_moment();
    }
    throw std::runtime_error(name + " did not come up");
}

UploadProgram::~UploadProgram() {
    if (child_.pid() > 0) {
        end();
    }
}

bool UploadProgram::was_killed() {
    for (int tries = 0; tries < 2000; ++tries) {
        if (const std::optional<world::Finished> end = child_.poll()) {
            return end->signal == SIGKILL;
        }
        wait_a_moment();
    }
    return false;
}

void UploadProgram::end() {
    kill(pid_, SIGKILL);
    child_.wait();
}
