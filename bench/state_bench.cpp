// Reading and writing a one-value state file against plain stdio. Runs in a private world, because
// state files have fixed paths.
#include <unistd.h>

#include <cstdio>

#include "counted.h"
#include "state/credentials.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"

namespace {

constexpr const char *kFile = "/tmp/app/cloud_tmp/seqno_file";

void plain_write(benchmark::State &state) {
    for (auto _ : state) {
        std::FILE *const file = std::fopen(kFile, "w");
        std::fprintf(file, "%d", 4711);
        std::fflush(file);
        fsync(fileno(file));
        std::fclose(file);
    }
}

void setter(benchmark::State &state) {
    for (auto _ : state) {
        benchmark::DoNotOptimize(api_omcloud_seqno_set(4711));
    }
}

void plain_read(benchmark::State &state) {
    int value = 0;
    for (auto _ : state) {
        std::FILE *const file = std::fopen(kFile, "r");
        benchmark::DoNotOptimize(std::fscanf(file, "%d", &value));
        std::fclose(file);
    }
}

void getter(benchmark::State &state) {
    int32_t value = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(api_omcloud_seqno_get(&value));
    }
}

BENCHMARK(plain_write)->Apply(iterations);
BENCHMARK(setter)->Apply(iterations);
BENCHMARK(plain_read)->Apply(iterations);
BENCHMARK(getter)->Apply(iterations);

}  // namespace

int main(int argc, char **argv) {
    world::enter();
    world::move_inside(argv);
    api_omcloud_seqno_set(4711);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
