// So that system calls can be counted: BENCH_ITERATIONS in the environment fixes how often each
// operation runs.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdlib>

inline void iterations(benchmark::internal::Benchmark *bench) {
    if (const char *const asked = std::getenv("BENCH_ITERATIONS")) {
        bench->Iterations(std::atoi(asked));
    }
}
