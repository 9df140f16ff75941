#include "tests/faults/disturbed_run.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <sstream>

#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/spawn.h"
#include "tests/faults/memory/faulty_memory.h"
#include "tests/faults/syscalls/tracer.h"

namespace reliability {
namespace {

constexpr const char *kMemoryRecord = "/run/world/memory";
// More sleeps than three failed requests and three failed uploads have.
constexpr const char *kMostSleeps = "8";
// Of the processor; a run takes hundredths.
constexpr struct rlimit kMostSeconds = {6, 7};
constexpr unsigned kLongestRun = 60;  // seconds
constexpr unsigned kLongestSlowRun = 300;

world::Command command_of(const std::vector<std::string> &words, const Disturbance &disturbance,
                          bool slow) {
    world::Command command(words);
    command.without_inherited_environment()
        .set("PATH", std::getenv("PATH"))
        .set("LD_PRELOAD", SLEEP_STAND_IN ":" FAULTY_MEMORY)
        .set(FAULTY_MEMORY_RECORD, kMemoryRecord)
        .redirect(STDIN_FILENO, "/dev/null")
        .quiet();
    if (slow)
        command.set(FAULTY_MEMORY_STEADY, "1");
    const bool is_traced = disturbance.trouble != Trouble::allocation;
    if (!is_traced) {
        command.set(FAULTY_MEMORY_AT, std::to_string(disturbance.at));
        if (disturbance.at == 0)
            command.set(FAULTY_MEMORY_PLACES, "1");
        if (disturbance.onward)
            command.set(FAULTY_MEMORY_ONWARD, "1");
    }
    return command.before([=] {
        setpgid(0, 0);
        if (!slow)
            setrlimit(RLIMIT_CPU, &kMostSeconds);
        if (is_traced)
            be_traced();
    });
}

// Kills a process group that runs too long; one at a time.
class Deadline {
  public:
    Deadline(pid_t group, unsigned seconds) {
        group_ = group;
        passed_ = 0;
        struct sigaction action = {};
        action.sa_handler = [](int) {
            passed_ = 1;
            kill(-group_, SIGKILL);
        };
        action.sa_flags = SA_RESTART;
        sigaction(SIGALRM, &action, nullptr);
        alarm(seconds);
    }
    ~Deadline() { alarm(0); }
    bool passed() const { return passed_ != 0; }

  private:
    static inline pid_t group_;
    static inline volatile sig_atomic_t passed_;
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
    const pid_t process = world::spawn(command_of(words, disturbance, slow)).release();
    setpgid(process, process);
    const Deadline deadline(process, slow ? kLongestSlowRun : kLongestRun);
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
