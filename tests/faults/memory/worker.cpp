#include "worker.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "operation.h"
#include "testing/console.h"
#include "testing/failing_memory.h"
#include "testing/files.h"

Report *g_report;

namespace {

constexpr const char *kConsole = "/dev/console";
constexpr const char *kOutput = "/run/world/torture/output";
constexpr int kMostFrames = 48;

int g_console;

bool is_in(const void *address, const char *function) {
    Dl_info place;
    return dladdr(address, &place) != 0 && place.dli_sname != nullptr &&
           std::strcmp(place.dli_sname, function) == 0;
}

// Notes the innermost place that is neither libc's nor this function.
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

// A transfer that never ends: libcurl waits for OpenSSL, which has given up.
void name_wait(int) {
    void *frames[kMostFrames];
    const int count = backtrace(frames, kMostFrames);
    const bool transfers = std::any_of(frames, frames + count, [](const void *frame) {
        return is_in(frame, "curl_easy_perform");
    });
    if (transfers && memory_failed() != 0 && is_in_openssl(memory_first_refused()))
        std::snprintf(g_report->fault, sizeof g_report->fault,
                      "an endless wait of curl_easy_perform for libssl");
    _exit(kEndlessWait);
}

void replace(int descriptor, const char *path) {
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
    dup2(file, descriptor);
    close(file);
}

}  // namespace

bool is_in_openssl(const void *address) {
    Dl_info found;
    return dladdr(address, &found) != 0 && (std::strstr(found.dli_fname, "libcrypto") != nullptr ||
                                            std::strstr(found.dli_fname, "libssl") != nullptr);
}

void share_report() {
    if (g_report != nullptr)
        return;
    void *const memory =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("no shared memory");
    g_report = static_cast<Report *>(memory);
}

void watch_faults() {
    void *nothing[1];
    backtrace(nothing, 1);  // loads what it needs now
    signal(SIGSEGV, name_fault);
    signal(SIGALRM, name_wait);
    alarm(kPatienceSeconds);
}

void take_streams() {
    memory_follow(1);
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
