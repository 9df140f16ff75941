// Collecting a reply in memory against a plain realloc loop.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "cloud_http/http_reply.h"

namespace {

constexpr std::size_t kChunk = 64 * 1024;

std::size_t chunks(const benchmark::State &state) {
    return static_cast<std::size_t>(state.range(0)) * (1 << 20) / kChunk;
}

void plain_realloc(benchmark::State &state) {
    const std::vector<char> chunk(kChunk, 'x');
    for (auto _ : state) {
        char *text = nullptr;
        std::size_t size = 0;
        for (std::size_t i = 0; i < chunks(state); ++i) {
            text = static_cast<char *>(std::realloc(text, size + kChunk + 1));
            std::memcpy(text + size, chunk.data(), kChunk);
            size += kChunk;
            text[size] = '\0';
        }
        benchmark::DoNotOptimize(text);
        std::free(text);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * chunks(state) * kChunk));
}

void reply_write(benchmark::State &state) {
    std::vector<char> chunk(kChunk, 'x');
    for (auto _ : state) {
        HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
        for (std::size_t i = 0; i < chunks(state); ++i) {
            http_reply_write(chunk.data(), 1, kChunk, &reply);
        }
        benchmark::DoNotOptimize(reply.data);
        std::free(reply.data);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * chunks(state) * kChunk));
}

void sizes(benchmark::internal::Benchmark *bench) {
    bench->ArgName("MiB")->RangeMultiplier(4)->Range(1, 256)->Unit(benchmark::kMillisecond);
}

BENCHMARK(plain_realloc)->Apply(sizes);
BENCHMARK(reply_write)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
