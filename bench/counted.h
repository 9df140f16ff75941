// The environment variable BENCH_ITERATIONS fixes how often each operation runs, so that strace can
// count its system calls.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdlib>

inline void iterations(benchmark::internal::Benchmark *bench) {
    if (const char *const asked = std::getenv("BENCH_ITERATIONS")) {
        bench->Iterations(std::atoi(asked));
    }
}
