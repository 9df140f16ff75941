#include "upload_program.h"

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <stdexcept>

#include "files.h"

namespace {

std::vector<std::pair<int, int>> g_sent;
bool g_refuse = false;

void send(pid_t pid, int number) { syscall(SYS_kill, pid, number); }

void wait_a_moment() {
    const timespec moment = {0, 1000000};
    nanosleep(&moment, nullptr);
}

[[noreturn]] void run(const char *name, UploadProgram::State state) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NAME, name);
    switch (state) {
        case UploadProgram::State::running:
            for (volatile unsigned turns = 0;; turns = turns + 1) {
            }
        case UploadProgram::State::stopped:
            send(getpid(), SIGSTOP);
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

// In place of the C library's: passes signals on and remembers them.
extern "C" int kill(pid_t pid, int number) noexcept {
    g_sent.emplace_back(pid, number);
    if (g_refuse) {
        errno = EPERM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_kill, pid, number));
}

std::vector<std::pair<int, int>> sent_signals() { return g_sent; }
void clear_sent_signals() { g_sent.clear(); }
void refuse_signals(bool refuse) { g_refuse = refuse; }

UploadProgram::UploadProgram(const std::string &name, State state) : pid_(fork()) {
    if (pid_ == 0) {
        run(name.c_str(), state);
    }
    if (state == State::ended) {
        await(name, 'S');
        send(pid_, SIGKILL);
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

UploadProgram::~UploadProgram() { end(); }

bool UploadProgram::was_killed() {
    for (int tries = 0; tries < 2000; ++tries) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
        }
        wait_a_moment();
    }
    return false;
}

void UploadProgram::end() {
    send(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
}
