#include "disturbed_run.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <system_error>
#include <thread>

#include "faulty_memory.h"
#include "files.h"
#include "private_world.h"
#include "tracer.h"

namespace reliability {
namespace {

constexpr const char *kMemoryRecord = "/run/world/memory";
// More sleeps than three failed requests and three failed uploads have.
constexpr const char *kMostSleeps = "8";
// Of the processor; a run takes hundredths.
constexpr struct rlimit kMostSeconds = {6, 7};
constexpr std::chrono::seconds kLongestRun{60};
constexpr std::chrono::seconds kLongestSlowRun{300};

// Everything execve() needs, made before the fork, since a child of a program with threads must
// not allocate.
class CommandLine {
  public:
    CommandLine(const std::vector<std::string> &words, const Disturbance &disturbance, bool slow)
        : words_(words), slow_(slow) {
        for (const std::string &word : words_)
            arguments_.push_back(const_cast<char *>(word.c_str()));
        arguments_.push_back(nullptr);
        settings_ = {"PATH=" + std::string(std::getenv("PATH")),
                     "LD_PRELOAD=" SLEEP_STAND_IN ":" FAULTY_MEMORY,
                     FAULTY_MEMORY_RECORD "=" + std::string(kMemoryRecord)};
        if (slow)
            settings_.emplace_back(FAULTY_MEMORY_STEADY "=1");
        if (disturbance.trouble == Trouble::allocation) {
            settings_.push_back(FAULTY_MEMORY_AT "=" + std::to_string(disturbance.at));
            if (disturbance.at == 0)
                settings_.push_back(FAULTY_MEMORY_PLACES "=1");
            if (disturbance.onward)
                settings_.push_back(FAULTY_MEMORY_ONWARD "=1");
        }
        for (const std::string &setting : settings_)
            environment_.push_back(const_cast<char *>(setting.c_str()));
        environment_.push_back(nullptr);
    }

    [[noreturn]] void become() const {
        for (const int number : {SIGINT, SIGQUIT, SIGPIPE})
            signal(number, SIG_DFL);
        if (!slow_)
            setrlimit(RLIMIT_CPU, &kMostSeconds);
        const int nowhere = open("/dev/null", O_RDWR);
        for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            dup2(nowhere, descriptor);
        close(nowhere);
        execve(arguments_[0], arguments_.data(), environment_.data());
        _exit(127);
    }

  private:
    std::vector<std::string> words_;
    const bool slow_;
    std::vector<std::string> settings_;
    std::vector<char *> arguments_;
    std::vector<char *> environment_;
};

// Ends a run that does not end.
class Deadline {
  public:
    Deadline(pid_t group, std::chrono::seconds longest)
        : group_(group), longest_(longest), thread_([this] { watch(); }) {}
    ~Deadline() { stop(); }
    bool passed() {
        stop();
        return passed_;
    }

  private:
    void watch() {
        std::unique_lock<std::mutex> lock(guard_);
        if (!ended_.wait_for(lock, longest_, [this] { return over_; })) {
            passed_ = true;
            kill(-group_, SIGKILL);
        }
    }
    void stop() {
        {
            const std::lock_guard<std::mutex> lock(guard_);
            over_ = true;
        }
        ended_.notify_all();
        if (thread_.joinable())
            thread_.join();
    }
    const pid_t group_;
    const std::chrono::seconds longest_;
    std::mutex guard_;
    std::condition_variable ended_;
    bool over_ = false;
    bool passed_ = false;
    std::thread thread_;
};

void read_memory_record(RunResult &result) {
    std::istringstream record(world::read_file_if_any(kMemoryRecord));
    std::string line;
    while (std::getline(record, line)) {
        if (line[0] == '#')
            result.places.push_back(std::stol(line.substr(1)));
        else if (line.find(' ') == std::string::npos)
            result.allocations = std::stol(line);
        else if (line[0] == '<')
            result.failed_frames.push_back(line.substr(1));
        else
            result.fault_frames.push_back(line);
    }
}

}  // namespace

RunResult run_disturbed(const std::vector<std::string> &words, const Disturbance &disturbance,
                        bool slow) {
    static const bool adopts = [] {
        prctl(PR_SET_CHILD_SUBREAPER, 1);
        world::write_file(world::kSleepLimit, kMostSleeps);
        return true;
    }();
    (void)adopts;
    const bool is_traced = disturbance.trouble != Trouble::allocation;
    unlink(kMemoryRecord);
    const CommandLine command(words, disturbance, slow);
    const pid_t process = fork();
    if (process == 0) {
        setpgid(0, 0);
        if (is_traced)
            be_traced();
        command.become();
    }
    if (process < 0)
        throw std::system_error(errno, std::generic_category(), "fork");
    setpgid(process, process);
    Deadline deadline(process, slow ? kLongestSlowRun : kLongestRun);
    RunResult result;
    if (is_traced)
        trace(process, disturbance, result);
    int status = 0;
    for (pid_t ended = 0; (ended = waitpid(-1, &status, 0)) > 0 || errno == EINTR;)
        if (ended == process)
            result.status = status;
    const int signal = WIFSIGNALED(result.status) ? WTERMSIG(result.status) : 0;
    result.overdue = deadline.passed() || signal == SIGXCPU;
    result.gave_up = signal == SIGTERM;
    read_memory_record(result);
    if (!is_traced)
        result.disturbed = !result.failed_frames.empty();
    return result;
}

}  // namespace reliability
