#include "tests/faults/syscalls/tracer.h"

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <filesystem>

#include "tests/faults/disturbed_run.h"
#include "tests/faults/memory/faulty_memory.h"
#include "tests/faults/syscalls/faulty_calls.h"

namespace reliability {
namespace {

constexpr int kSystemCallStop = SIGTRAP | 0x80;
constexpr int kNoSuchCall = -1;

// As much of the text as lies before an unmapped page.
std::string text_at(pid_t process, uint64_t address) {
    char text[PATH_MAX] = "";
    const int memory =
        open(("/proc/" + std::to_string(process) + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
    if (pread(memory, text, sizeof text - 1, static_cast<off_t>(address)) < 0)
        text[0] = '\0';
    close(memory);
    return text;
}

std::string path_at(pid_t process, uint64_t folder, uint64_t address) {
    const std::string path = text_at(process, address);
    if (path.empty() || path[0] == '/')
        return path;
    const std::string root = "/proc/" + std::to_string(process);
    const int descriptor = static_cast<int>(folder);
    const std::string place =
        descriptor == AT_FDCWD ? root + "/cwd" : root + "/fd/" + std::to_string(descriptor);
    std::error_code none;
    return (std::filesystem::read_symlink(place, none) / path).lexically_normal().string();
}

uint64_t here() { return static_cast<uint64_t>(AT_FDCWD); }

// The path that a system call changes; empty when it changes none.
std::string changed_path(pid_t process, uint64_t number, const uint64_t *arguments) {
    const auto writes = [](uint64_t flags) { return (flags & (O_ACCMODE | O_CREAT)) != 0; };
    switch (number) {
        case SYS_openat:
            return writes(arguments[2]) ? path_at(process, arguments[0], arguments[1]) : "";
        case SYS_open:
            return writes(arguments[1]) ? path_at(process, here(), arguments[0]) : "";
        case SYS_unlinkat:
        case SYS_mkdirat:
        case SYS_renameat2:
            return path_at(process, arguments[0], arguments[1]);
        case SYS_creat:
        case SYS_unlink:
        case SYS_rename:
        case SYS_mkdir:
        case SYS_rmdir:
        case SYS_chmod:
        case SYS_truncate:
        case SYS_link:
        case SYS_symlink:
            return path_at(process, here(), arguments[0]);
        default:
            return "";
    }
}

// strace --inject cannot replace this: it counts calls for each task apart, signals one task and no
// group, lets a call that fails have no effect, and shortens no transfer.
class Tracer {
  public:
    Tracer(pid_t program, const Disturbance &disturbance, RunResult &result)
        : program_(program), disturbance_(disturbance), result_(result) {
        if (disturbance.trouble == Trouble::call)
            faulty_ = &faulty_calls()[disturbance.call];
    }

    void run() {
        constexpr long kOptions = PTRACE_O_TRACESYSGOOD | PTRACE_O_TRACEFORK | PTRACE_O_TRACEVFORK |
                                  PTRACE_O_TRACECLONE | PTRACE_O_EXITKILL;
        int status = 0;
        waitpid(program_, &status, 0);
        ptrace(PTRACE_SETOPTIONS, program_, nullptr, kOptions);
        go_on(program_, 0);
        for (pid_t task = 0; (task = waitpid(-1, &status, __WALL)) > 0 || errno == EINTR;) {
            if (task > 0 && WIFSTOPPED(status))
                take(task, WSTOPSIG(status));
            else if (task == program_)
                result_.status = status;
        }
    }

  private:
    void take(pid_t task, int signal) {
        if (signal == kSystemCallStop)
            take_call(task);
        // The tracing's own stops are not for the program; a new task begins with the last one.
        const bool is_own = signal == kSystemCallStop || signal == SIGTRAP || signal == SIGSTOP;
        go_on(task, is_own ? 0 : signal);
    }

    void go_on(pid_t task, int signal) {
        const bool leaves = over_ && task != disturbed_;
        ptrace(leaves ? PTRACE_DETACH : PTRACE_SYSCALL, task, nullptr, signal);
    }

    void take_call(pid_t task) {
        struct __ptrace_syscall_info info = {};
        if (ptrace(PTRACE_GET_SYSCALL_INFO, task, sizeof info, &info) <= 0)
            return;
        if (info.op == PTRACE_SYSCALL_INFO_ENTRY)
            enter_call(task, info.entry.nr, info.entry.args);
        else if (info.op == PTRACE_SYSCALL_INFO_EXIT && task == disturbed_)
            leave_call(task);
    }

    void enter_call(pid_t task, uint64_t number, const uint64_t *arguments) {
        if (number == FAULTY_MEMORY_MAIN_BEGINS) {
            counting_ = true;
            return;
        }
        if (!counting_ || over_)
            return;
        const std::string path = changed_path(task, number, arguments);
        if (!path.empty())
            result_.changed.push_back(path);
        const Caller caller = task == program_ ? Caller::program : Caller::command;
        if (disturbance_.trouble == Trouble::none)
            count(caller, number);
        if (caller != disturbance_.caller)
            return;
        if (disturbance_.trouble == Trouble::kill && ++seen_ == disturbance_.at)
            end(caller);
        if (faulty_ != nullptr && is_meant(*faulty_, number) && ++seen_ == disturbance_.at)
            disturb(task, arguments);
    }

    static bool is_meant(const FaultyCall &call, uint64_t number) {
        return std::find(call.numbers.begin(), call.numbers.end(), static_cast<long>(number)) !=
               call.numbers.end();
    }

    void count(Caller caller, uint64_t number) {
        CallCounts &counts = caller == Caller::program ? result_.own_calls : result_.command_calls;
        ++counts.all;
        counts.faulty.resize(faulty_calls().size());
        for (size_t i = 0; i < faulty_calls().size(); ++i)
            counts.faulty[i] += is_meant(faulty_calls()[i], number) ? 1 : 0;
    }

    // As when the program is killed, or as when the power fails amid a command of its.
    void end(Caller caller) {
        over_ = true;
        result_.disturbed = result_.killed = true;
        kill(caller == Caller::program ? program_ : -program_, SIGKILL);
    }

    // The call is kept from happening, or made to do less; what it returns is changed at its end.
    void disturb(pid_t task, const uint64_t *arguments) {
        over_ = true;
        result_.disturbed = true;
        if (faulty_->path_argument > 0) {
            const int at = faulty_->path_argument - 1;
            result_.path = path_at(task, at > 0 ? arguments[0] : here(), arguments[at]);
        }
        struct user_regs_struct registers;
        if (ptrace(PTRACE_GETREGS, task, nullptr, &registers) != 0)
            return;
        disturbed_ = task;
        size_ = registers.rdx;
        if (chosen_error() == 0)
            registers.rdx = std::max<uint64_t>(size_ / 2, 1);
        else if (!faulty_->is_done)
            registers.orig_rax = static_cast<unsigned long long>(kNoSuchCall);
        ptrace(PTRACE_SETREGS, task, nullptr, &registers);
    }

    void leave_call(pid_t task) {
        disturbed_ = 0;
        struct user_regs_struct registers;
        if (ptrace(PTRACE_GETREGS, task, nullptr, &registers) != 0)
            return;
        if (chosen_error() == 0)
            registers.rdx = size_;
        else
            registers.rax = static_cast<unsigned long long>(-chosen_error());
        ptrace(PTRACE_SETREGS, task, nullptr, &registers);
    }

    int chosen_error() const { return faulty_->errors[disturbance_.error].number; }

    const pid_t program_;
    const Disturbance &disturbance_;
    RunResult &result_;
    const FaultyCall *faulty_ = nullptr;
    pid_t disturbed_ = 0;  // the task in the disturbed call
    bool counting_ = false;
    bool over_ = false;
    long seen_ = 0;
    uint64_t size_ = 0;
};

}  // namespace

void be_traced() {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
}

void trace(pid_t program, const Disturbance &disturbance, RunResult &result) {
    Tracer(program, disturbance, result).run();
}

}  // namespace reliability
