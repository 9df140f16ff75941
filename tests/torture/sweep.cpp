#include "sweep.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <openssl/err.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "console.h"
#include "files.h"
#include "log/log.h"
#include "peers.h"

namespace {

constexpr const char *kConsole = "/dev/console";
constexpr const char *kOutput = "/run/world/torture/output";
constexpr const char *kErrors = "/run/world/torture/errors";
constexpr const char *kAssertion =
    "json_parser.c:387: initJsonRpcObject: Assertion `((void *)0) != root' failed.";
constexpr int kMostDescriptors = 256;
constexpr int kMostFrames = 48;
constexpr std::size_t kMostAllocations = 1 << 15;
constexpr unsigned kPatienceSeconds = 60;
constexpr int kEndlessWait = 3;  // exit status

// What a worker tells, also when a signal ends it.
struct Report {
    std::size_t allocations;
    bool of_openssl[kMostAllocations];  // by number, the first is 1
    std::size_t index;                  // of the point under way
    std::size_t points;
    bool blocks_left;      // by the run before
    char complaint[4096];  // of the point under way
    char fault[256];       // where a signal met it
};

Report *g_report;
int g_console;

Report *shared_report() {
    void *const memory =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no shared memory");
    return static_cast<Report *>(memory);
}

bool is_in(const void *address, const char *function) {
    Dl_info place;
    return dladdr(address, &place) != 0 && place.dli_sname != nullptr &&
           std::strcmp(place.dli_sname, function) == 0;
}

// Notes the first place on the way down that is not libc's and not this function.
void name_fault(int) {
    void *frames[kMostFrames];
    const int count = backtrace(frames, kMostFrames);
    for (int i = 1; i < count; ++i) {
        Dl_info place;
        if (dladdr(frames[i], &place) == 0 || std::strstr(place.dli_fname, "libc.so") != nullptr)
            continue;
        const char *const file = std::strrchr(place.dli_fname, '/');
        std::snprintf(g_report->fault, sizeof g_report->fault, "a fault of %s in %s",
                      place.dli_sname != nullptr ? place.dli_sname : "a static function",
                      file != nullptr ? file + 1 : place.dli_fname);
        break;
    }
    signal(SIGSEGV, SIG_DFL);
    raise(SIGSEGV);
}

// A transfer that will never end: what libcurl waits for, OpenSSL does not do any more.
void name_wait(int) {
    void *frames[kMostFrames];
    const int count = backtrace(frames, kMostFrames);
    const bool transfers = std::any_of(frames, frames + count, [](const void *frame) {
        return is_in(frame, "curl_easy_perform");
    });
    if (transfers && failing_memory::openssl_asked())
        std::snprintf(g_report->fault, sizeof g_report->fault,
                      "an endless wait of curl_easy_perform for libssl");
    _exit(kEndlessWait);
}

void watch_faults() {
    void *nothing[1];
    backtrace(nothing, 1);    // loads what it needs now
#ifndef __SANITIZE_ADDRESS__  // which tells more itself
    signal(SIGSEGV, name_fault);
#endif
    signal(SIGALRM, name_wait);
    alarm(kPatienceSeconds);
}

void replace(int descriptor, const char *path) {
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, descriptor);
    close(file);
}

// The streams of a worker; those of stdio have their buffers before memory is watched.
void take_streams() {
    failing_memory::follow();
    g_console = open(kConsole, O_RDWR | O_NONBLOCK | O_CLOEXEC);
    std::fflush(stdout);
    replace(STDOUT_FILENO, kOutput);
    replace(STDERR_FILENO, kErrors);
    std::printf("\n");
    std::fflush(stdout);
}

void empty_streams() {
    console_text();
    std::fflush(stdout);
    if (ftruncate(STDOUT_FILENO, 0) != 0 || ftruncate(STDERR_FILENO, 0) != 0)
        std::abort();
}

int open_descriptors() {
    int count = 0;
    for (int i = 0; i < kMostDescriptors; ++i)
        count += fcntl(i, F_GETFD) != -1;
    return count;
}

std::string judge(const Operation &operation, Form form, const std::string &outcome) {
    const auto holds = [&](const std::vector<std::string> &allowed) {
        return std::find(allowed.begin(), allowed.end(), outcome) != allowed.end();
    };
    const bool as_allowed =
        failing_memory::failed() == 0
            ? outcome == operation.allowed.front()
            : holds(operation.allowed) || (form == Form::kCold && holds(operation.allowed_cold));
    return as_allowed ? "" : "came to <" + outcome + ">\n";
}

// The outcome, put into words; what the call handed out is released.
std::string call(const Operation &operation, Form form, failing_memory::Mode mode,
                 std::size_t point) {
    operation.prepare();
    empty_streams();
    const int opened = open_descriptors();
    g_console_debug = 1;
    if (point == 0)
        failing_memory::watch_askers(g_report->of_openssl, kMostAllocations);
    else
        failing_memory::watch(point, mode);
    operation.call();
    failing_memory::give_back();
    failing_memory::stop();
    ERR_clear_error();  // a thread's own list of errors, with their texts
    tzset();            // libc's copy of the zone's name, which it may have lost
    g_console_debug = 0;
    const bool left_open = open_descriptors() != opened;
    return judge(operation, form, operation.outcome()) +
           (left_open ? "left a descriptor open\n" : "");
}

// One run in this process.
void run_once(const Operation &operation, Form form, failing_memory::Mode mode, std::size_t point) {
    const std::size_t live = failing_memory::live();
    const auto tell = [&](const std::string &complaint) {
        std::snprintf(g_report->complaint, sizeof g_report->complaint, "%s", complaint.c_str());
    };
    tell(call(operation, form, mode, point));
    g_report->blocks_left =
        form == Form::kWarm && g_report->complaint[0] == '\0' && failing_memory::live() != live;
    if (g_report->blocks_left)
        tell(std::to_string(failing_memory::live() - live) + " blocks are left, the first is " +
             std::to_string(failing_memory::first_live()) + "\n");
    g_report->points += failing_memory::failed() != 0;
    if (point == 0)
        g_report->allocations = failing_memory::asked();
}

// A leak loses memory every time; what a library keeps from its first use or failure on, once.
void run_warm(const Operation &operation, failing_memory::Mode mode, std::size_t point) {
    const std::size_t points = g_report->points;
    for (int i = 0; i < 3; ++i) {
        g_report->points = points;
        run_once(operation, Form::kWarm, mode, point);
        if (!g_report->blocks_left)
            return;
    }
}

void warm_up(const Operation &operation) {
    run_once(operation, Form::kCold, failing_memory::Mode::kOnce, 0);
    run_warm(operation, failing_memory::Mode::kOnce, 0);
    g_report->points = 0;
}

struct Sweep {
    const Operation &operation;
    Form form;
    failing_memory::Mode mode;
    const std::vector<std::size_t> &points;
    Tally tally;
};

void complain(Sweep &sweep, std::size_t point, const std::string &what) {
    if (sweep.tally.complaints++ == 0)
        sweep.tally.complaint = "allocation " + std::to_string(point) + ": " + what;
}

// A worker's life: in the warm form all points from that one on, in the cold one a single one. It
// stops after a complaint.
void work(const Sweep &sweep, std::size_t index) {
    take_streams();
    watch_faults();
    g_report->index = index;
    if (sweep.form == Form::kCold) {
        run_once(sweep.operation, Form::kCold, sweep.mode, sweep.points[index]);
        return;
    }
    warm_up(sweep.operation);
    for (; g_report->index < sweep.points.size(); ++g_report->index) {
        alarm(kPatienceSeconds);
        run_warm(sweep.operation, sweep.mode, sweep.points[g_report->index]);
        if (g_report->complaint[0] != '\0')
            return;
    }
}

// Forks a worker and waits; the wait status.
int run_worker(const std::function<void()> &life) {
    std::fflush(stdout);
    std::memset(g_report, 0, sizeof *g_report);
    const pid_t worker = fork();
    if (worker == 0) {
        life();
        std::fflush(stdout);
        _exit(0);
    }
    int status = 0;
    waitpid(worker, &status, 0);
    return status;
}

// Not this project's to mend: OpenSSL that faults at its first start, or that cannot go on after
// one of its own allocations has failed.
bool is_library_fault(Form form, int status, const std::string &fault) {
    if (WIFEXITED(status))
        return WEXITSTATUS(status) == kEndlessWait && !fault.empty();
    return form == Form::kCold && (fault.find("libcrypto") != std::string::npos ||
                                   fault.find("libssl") != std::string::npos);
}

bool is_unexplained_wait(int status) {
    return WIFEXITED(status) && WEXITSTATUS(status) == kEndlessWait && g_report->fault[0] == '\0';
}

// glibc has no memory for the assertion's text either when none is left.
bool is_documented_assertion(const Sweep &sweep, int status) {
    const std::string errors = world::read_file_if_any(kErrors);
    const bool told = errors.find(kAssertion) != std::string::npos ||
                      (sweep.mode == failing_memory::Mode::kFromThenOn &&
                       errors.find("Unexpected error") != std::string::npos);
    return sweep.operation.may_end_by_assertion && WTERMSIG(status) == SIGABRT && told;
}

void take_end(Sweep &sweep, int status) {
    sweep.tally.points += g_report->points;
    if (g_report->index == sweep.points.size())
        return;
    const std::size_t point = sweep.points[g_report->index];
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        if (g_report->complaint[0] != '\0')
            complain(sweep, point, g_report->complaint);
        return;
    }
    ++sweep.tally.points;
    if (WIFSIGNALED(status) && is_documented_assertion(sweep, status))
        ++sweep.tally.asserted;
    else if (is_library_fault(sweep.form, status, g_report->fault))
        ++sweep.tally.library_faults[g_report->fault];
    else
        complain(sweep, point,
                 "ended with wait status " + std::to_string(status) + " " + g_report->fault + "\n" +
                     world::read_file_if_any(kErrors));
}

}  // namespace

std::string console_text() {
    std::string text;
    char piece[4096];
    for (ssize_t got = 0; (got = read(g_console, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<std::size_t>(got));
    return world::without_stamps(text);
}

std::string output_text() {
    std::fflush(stdout);
    return world::read_file_if_any(kOutput);
}

Needs count_allocations(const Operation &operation, Form form) {
    if (g_report == nullptr)
        g_report = shared_report();
    const int status = run_worker([&] {
        take_streams();
        watch_faults();
        if (form == Form::kWarm)
            warm_up(operation);
        else
            run_once(operation, Form::kCold, failing_memory::Mode::kOnce, 0);
    });
    if (status != 0 || g_report->complaint[0] != '\0')
        throw std::runtime_error(operation.name() + " fails with all memory: wait status " +
                                 std::to_string(status) + " " + g_report->fault + "\n" +
                                 g_report->complaint + world::read_file_if_any(kErrors));
    Needs needs = {g_report->allocations, {}};
    for (std::size_t i = 1; i <= needs.allocations && i < kMostAllocations; ++i) {
        if (!g_report->of_openssl[i])
            needs.not_of_openssl.push_back(i);
    }
    return needs;
}

Tally sweep(const Operation &operation, Form form, failing_memory::Mode mode,
            const std::vector<std::size_t> &points) {
    Sweep sweep{operation, form, mode, points, {}};
    for (std::size_t index = 0; index < points.size(); index = g_report->index + 1) {
        int status = run_worker([&] { work(sweep, index); });
        if (is_unexplained_wait(status)) {  // or a busy machine
            sweep.tally.points += g_report->points;
            const std::size_t again = g_report->index;
            status = run_worker([&] { work(sweep, again); });
        }
        take_end(sweep, status);
    }
    return sweep.tally;
}
