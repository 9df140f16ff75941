// A log line beside an empty call through the same kind of library, and beside the time conversion
// and the three system calls that it consists of.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>

#include "empty_call.h"
#include "log/log.h"

namespace {

constexpr const char *kLogFile = "/dev/null";

void empty_call(benchmark::State &state) {
    for (auto _ : state) {
        empty_log("%s %d filename %s\n", "api_TFA_post_FILE", 394, "/tmp/segmentrace.txt");
    }
}

void log_off(benchmark::State &state) {
    for (auto _ : state) {
        cloud_log("%s %d filename %s\n", "api_TFA_post_FILE", 394, "/tmp/segmentrace.txt");
    }
}

void time_conversion(benchmark::State &state) {
    char text[64];
    for (auto _ : state) {
        const std::time_t now = std::time(nullptr);
        benchmark::DoNotOptimize(ctime_r(&now, text));
    }
}

void open_write_close(benchmark::State &state) {
    static const char line[] = "[Thu Jan  1 00:00:00 1970]api_TFA_post_FILE 394 filename x\n";
    for (auto _ : state) {
        const int file = open(kLogFile, O_WRONLY | O_APPEND | O_CLOEXEC);
        benchmark::DoNotOptimize(write(file, line, sizeof line - 1));
        close(file);
    }
}

void log_to_file(benchmark::State &state) {
    std::snprintf(g_log_path, sizeof g_log_path, "%s", kLogFile);
    g_file_log = 1;
    for (auto _ : state) {
        cloud_log("%s %d filename %s\n", "api_TFA_post_FILE", 394, "/tmp/segmentrace.txt");
    }
    g_file_log = 0;
}

BENCHMARK(empty_call);
BENCHMARK(log_off);
BENCHMARK(time_conversion);
BENCHMARK(open_write_close);
BENCHMARK(log_to_file);

}  // namespace

BENCHMARK_MAIN();
