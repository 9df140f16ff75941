#include "sweep.h"

#include <openssl/err.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "log/log.h"
#include "servers.h"
#include "testing/descriptors.h"
#include "testing/files.h"
#include "worker.h"

namespace {

constexpr const char *kAssertion =
    "json_parser.c:387: initJsonRpcObject: Assertion `((void *)0) != root' failed.";

std::string judge(const Operation &operation, Form form, const std::string &outcome) {
    const auto place = std::find(operation.allowed.begin(), operation.allowed.end(), outcome);
    const bool is_first = place == operation.allowed.begin();
    if (is_first || (place != operation.allowed.end() && memory_failed() != 0)) {
        g_report->outcomes |= 1ul << (place - operation.allowed.begin());
        return "";
    }
    const auto &cold = operation.allowed_cold;
    return form == Form::kCold && std::find(cold.begin(), cold.end(), outcome) != cold.end()
               ? ""
               : "the outcome is <" + outcome + ">\n";
}

int note_caller(const MemoryRequest *request) {
    if (request->number < kMostAllocations)
        g_report->of_openssl[request->number] = is_in_openssl(request->caller);
    return 1;
}

// Calls the operation; a complaint, or empty.
std::string call(const Operation &operation, Form form, MemoryMode mode, std::size_t point) {
    reset_servers();
    g_result = 0;
    std::memset(g_text, 0, sizeof g_text);
    operation.prepare();
    empty_streams();
    const long opened = open_descriptors();
    g_console_debug = 1;
    memory_watch(point, mode, point == 0 ? note_caller : nullptr);
    operation.call();
    memory_give_back();
    memory_stop();
    ERR_clear_error();  // a thread's own list of errors, with their texts
    tzset();            // libc's copy of the zone's name, which it may have lost
    g_console_debug = 0;
    const bool left_open = open_descriptors() != opened;
    return judge(operation, form, operation.outcome()) +
           (left_open ? "left a descriptor open\n" : "");
}

// One run in this process; the report receives its complaint.
void run_once(const Operation &operation, Form form, MemoryMode mode, std::size_t point) {
    const std::size_t live = memory_live();
    const auto tell = [&](const std::string &complaint) {
        std::snprintf(g_report->complaint, sizeof g_report->complaint, "%s", complaint.c_str());
    };
    tell(call(operation, form, mode, point));
    g_report->blocks_left =
        form == Form::kWarm && g_report->complaint[0] == '\0' && memory_live() != live;
    if (g_report->blocks_left)
        tell(std::to_string(memory_live() - live) + " blocks are left, the first is " +
             std::to_string(memory_first_live()) + "\n");
    g_report->points += memory_failed() != 0;
    if (point == 0)
        g_report->allocations = memory_asked();
}

// A leak loses memory every time. A library that keeps a block from its first use or failure on loses
// it once.
void run_warm(const Operation &operation, MemoryMode mode, std::size_t point) {
    const std::size_t points = g_report->points;
    for (int i = 0; i < 3; ++i) {
        g_report->points = points;
        run_once(operation, Form::kWarm, mode, point);
        if (!g_report->blocks_left)
            return;
    }
}

void warm_up(const Operation &operation) {
    run_once(operation, Form::kCold, MEMORY_FAILS_ONCE, 0);
    run_warm(operation, MEMORY_FAILS_ONCE, 0);
    g_report->points = 0;
}

struct Sweep {
    const Operation &operation;
    Form form;
    MemoryMode mode;
    const std::vector<std::size_t> &points;
    Tally tally;
};

void complain(Sweep &sweep, std::size_t point, const std::string &what) {
    if (sweep.tally.complaints++ == 0)
        sweep.tally.complaint = "allocation " + std::to_string(point) + ": " + what;
}

// In a worker: all points from that one on (warm) or that one only (cold). It stops after a complaint.
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

// Faults of OpenSSL, which this project cannot mend: at its first start, or after one of its own
// allocations has failed.
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
    const bool told =
        errors.find(kAssertion) != std::string::npos ||
        (sweep.mode == MEMORY_FAILS_ONWARD && errors.find("Unexpected error") != std::string::npos);
    return sweep.operation.may_abort && WTERMSIG(status) == SIGABRT && told;
}

void take_end(Sweep &sweep, int status) {
    sweep.tally.points += g_report->points;
    sweep.tally.outcomes |= g_report->outcomes;
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

Needs count_allocations(const Operation &operation, Form form) {
    share_report();
    const int status = run_worker([&] {
        take_streams();
        watch_faults();
        if (form == Form::kWarm)
            warm_up(operation);
        else
            run_once(operation, Form::kCold, MEMORY_FAILS_ONCE, 0);
    });
    if (status != 0 || g_report->complaint[0] != '\0')
        throw std::runtime_error(operation.name + " fails with all memory: wait status " +
                                 std::to_string(status) + " " + g_report->fault + "\n" +
                                 g_report->complaint + world::read_file_if_any(kErrors));
    Needs needs = {g_report->allocations, {}};
    for (std::size_t i = 1; i <= needs.allocations && i < kMostAllocations; ++i) {
        if (!g_report->of_openssl[i])
            needs.not_of_openssl.push_back(i);
    }
    return needs;
}

Tally sweep(const Operation &operation, Form form, MemoryMode mode,
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
