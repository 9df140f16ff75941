#include "testing/private_world.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "testing/files.h"
#include "testing/shown_folders.h"
#include "testing/world_mounts.h"

namespace world {
namespace {

constexpr int kPassedSignals[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

volatile sig_atomic_t g_child;
int g_outer_process;

void pass_signal(int number) {
    if (g_child > 0)
        kill(g_child, number);
}

void pass_signals_to(pid_t child) {
    g_child = child;
    for (int number : kPassedSignals) {
        struct sigaction action = {};
        action.sa_handler = pass_signal;
        sigaction(number, &action, nullptr);
    }
}

void restore_signals() {
    g_child = 0;
    for (int number : kPassedSignals)
        signal(number, SIG_DFL);
}

[[noreturn]] void give_up(const std::string &what) {
    std::fprintf(stderr,
                 "%s\n"
                 "A private world needs Linux namespaces, and this system forbids them here.\n"
                 "One of these settings is the cause; as root, any of these allows it:\n"
                 "  sysctl -w user.max_user_namespaces=10000\n"
                 "  sysctl -w kernel.unprivileged_userns_clone=1              (Debian kernels)\n"
                 "  sysctl -w kernel.apparmor_restrict_unprivileged_userns=0  (Ubuntu 23.10 on)\n"
                 "In a container: start it with --privileged, or with --security-opt\n"
                 "seccomp=unconfined and --security-opt systempaths=unconfined.\n"
                 "Or run the same command as root.\n",
                 what.c_str());
    _exit(1);
}

std::string with_reason(const char *what) {
    return std::string(what) + ": " + std::strerror(errno);
}

bool may_mount() {
    const std::string status = read_file_if_any("/proc/self/status");
    const size_t at = status.find("CapEff:");
    if (at == std::string::npos)
        return false;
    const unsigned long long held = std::strtoull(status.c_str() + at + 7, nullptr, 16);
    return (held >> CAP_SYS_ADMIN & 1) != 0;
}

void unshare_namespaces() {
    constexpr int kCommon = CLONE_NEWNS | CLONE_NEWPID | CLONE_NEWNET | CLONE_NEWIPC | CLONE_NEWUTS;
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (may_mount() && unshare(kCommon) == 0)
        return;
    if (unshare(CLONE_NEWUSER | kCommon) != 0)
        give_up(with_reason("unshare"));
    try {
        write_file("/proc/self/setgroups", "deny");
        write_file("/proc/self/uid_map", "0 " + user + " 1");
        write_file("/proc/self/gid_map", "0 " + group + " 1");
    } catch (const std::system_error &error) {
        give_up(error.what());
    }
}

void bring_loopback_up() {
    const int handle = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    struct ifreq request = {};
    std::snprintf(request.ifr_name, sizeof request.ifr_name, "lo");
    request.ifr_flags = IFF_UP | IFF_RUNNING;
    if (handle < 0 || ioctl(handle, SIOCSIFFLAGS, &request) != 0)
        give_up(with_reason("loopback"));
    close(handle);
}

void set_environment() {
    const char *old_path = std::getenv("PATH");
    const std::string path = std::string(kStandInDir) + ":" +
                             (old_path ? old_path : "/usr/bin:/bin") + ":/usr/sbin:/sbin";
    setenv("PATH", path.c_str(), 1);
    for (const char *name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY",
                             "no_proxy", "NO_PROXY", "TMPDIR", "LC_ALL", "LANG"})
        unsetenv(name);
#ifdef CLOUD_COVERAGE
    const std::string build = WORLD_BINARY_DIR;
    setenv("GCOV_PREFIX", inside(build).c_str(), 1);
    setenv("GCOV_PREFIX_STRIP", std::to_string(std::count(build.begin(), build.end(), '/')).c_str(),
           1);
#endif
}

// The world's first process: builds it, starts the program in it, collects whatever ends.
// Returns in the program's process only; `report` carries the program's status to the outside.
void run_init(const Options &options, int report) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (read(report, &g_outer_process, sizeof g_outer_process) != sizeof g_outer_process)
        _exit(1);  // the outer process died before the line above took effect
    try {
        build_tree(options.keep);
    } catch (const std::exception &error) {
        give_up(error.what());
    }
    bring_loopback_up();
    (void)!sethostname(options.host_name.c_str(), options.host_name.size());
    prctl(PR_CAPBSET_DROP, CAP_SYS_BOOT);
    set_environment();

    const int console =
        open("/dev/console", O_RDWR | O_CLOEXEC);  // a writer never waits for a reader
    (void)fcntl(console, F_SETPIPE_SZ, 1 << 20);
    const pid_t program = fork();
    if (program == 0) {
        close(console);
        close(report);
        restore_signals();
        return;
    }
    pass_signals_to(program);
    int status = 0;
    for (pid_t ended = 0; program > 0 && ended != program;) {
        ended = waitpid(-1, &status, 0);
        if (ended < 0 && errno != EINTR)
            break;
    }
    (void)!write(report, &status, sizeof status);
    _exit(0);
}

[[noreturn]] void end_like(int status) {
    if (WIFSIGNALED(status)) {
        restore_signals();
        prctl(PR_SET_DUMPABLE, 0);
        raise(WTERMSIG(status));
    }
    _exit(WIFEXITED(status) ? WEXITSTATUS(status) : 1);
}

}  // namespace

void enter(const Options &options) {
    std::fflush(nullptr);
    int report[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, report) != 0)
        give_up(with_reason("socketpair"));
    unshare_namespaces();
    const pid_t init = fork();
    if (init < 0)
        give_up(with_reason("fork"));
    if (init == 0) {
        close(report[0]);
        run_init(options, report[1]);
        if (chdir(kDeviceDir) != 0)
            give_up(with_reason(kDeviceDir));
        return;
    }
    close(report[1]);
    pass_signals_to(init);
    (void)!write(report[0], &init, sizeof init);
    int status = 1 << 8;  // exit status 1, should the world end without a report
    while (read(report[0], &status, sizeof status) < 0 && errno == EINTR) {
    }
    while (waitpid(init, nullptr, 0) < 0 && errno == EINTR) {
    }
    end_like(status);
}

int outer_process() { return g_outer_process; }

void add_host(const std::string &name, const std::string &address) {
    write_file("/etc/hosts", read_file_if_any("/etc/hosts") + address + " " + name + "\n");
}

void reset() {
    for (const char *folder : {"/tmp", "/mnt", kDeviceDir, "/etc/ssl/certs"})
        clear_directory(folder);
    for (const char *record : {kSleepRecord, kSleepLimit, kRebootRecord})
        std::filesystem::remove(record);
    seed_tree();
    write_file("/etc/hosts", "127.0.0.1 localhost\n");
}

int reboot_count() {
    const std::string calls = read_file_if_any(kRebootRecord);
    return static_cast<int>(std::count(calls.begin(), calls.end(), '\n'));
}

}  // namespace world
