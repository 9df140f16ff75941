// A disabled log line against an empty call through a shared library, and a written one against its
// system calls and its time conversion. In a private world the console can be /dev/null.
#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "counted.h"
#include "empty_call.h"
#include "log/log.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"

namespace {

void empty_call(benchmark::State &state) {
    for (auto _ : state) {
        empty_log("%s %d filename %s\n", "api_TFA_post_FILE", 394, "/tmp/segmentrace.txt");
    }
}

void log_line(benchmark::State &state) {
    for (auto _ : state) {
        cloud_log("%s %d filename %s\n", "api_TFA_post_FILE", 394, "/tmp/segmentrace.txt");
    }
}

void log_off(benchmark::State &state) { log_line(state); }

void log_to_console(benchmark::State &state) {
    g_console_debug = 1;
    log_line(state);
    g_console_debug = 0;
}

void log_to_file(benchmark::State &state) {
    std::snprintf(g_log_path, sizeof g_log_path, "/dev/null");
    g_file_log = 1;
    log_line(state);
    g_file_log = 0;
}

void time_conversion(benchmark::State &state) {
    for (auto _ : state) {
        const std::time_t now = std::time(nullptr);
        benchmark::DoNotOptimize(std::ctime(&now));
    }
}

void open_write_close(benchmark::State &state) {
    static const char line[] = "[Thu Jan  1 00:00:00 1970]api_TFA_post_FILE 394 filename x\n";
    for (auto _ : state) {
        const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
        benchmark::DoNotOptimize(write(file, line, sizeof line - 1));
        close(file);
    }
}

BENCHMARK(empty_call)->Apply(iterations);
BENCHMARK(log_off)->Apply(iterations);
BENCHMARK(time_conversion)->Apply(iterations);
BENCHMARK(open_write_close)->Apply(iterations);
BENCHMARK(log_to_console)->Apply(iterations);
BENCHMARK(log_to_file)->Apply(iterations);

}  // namespace

int main(int argc, char **argv) {
    world::enter();
    world::move_inside(argv);
    if (mount("/dev/null", "/dev/console", nullptr, MS_BIND, nullptr) != 0) {
        std::perror("/dev/console");
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
