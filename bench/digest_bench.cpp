// The signer against OpenSSL's own HMAC with the fastest conversion to hex digits.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <cstring>
#include <string>

#include "state/digest.h"

namespace {

constexpr const char *kKey = "0b1946c1-8f0e-4a57-9d0a-6d3a66a4f0d2";
constexpr std::size_t kHexSize = 65;

std::string message(const benchmark::State &state) {
    return std::string(static_cast<std::size_t>(state.range(0)), 'm');
}

void openssl_hmac(benchmark::State &state) {
    const std::string text = message(state);
    char hex[kHexSize] = {};
    for (auto _ : state) {
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned length = 0;
        HMAC(EVP_sha256(), kKey, static_cast<int>(std::strlen(kKey)),
             reinterpret_cast<const unsigned char *>(text.data()), text.size(), digest, &length);
        for (unsigned i = 0; i < length; ++i) {
            hex[2 * i] = "0123456789abcdef"[digest[i] >> 4];
            hex[2 * i + 1] = "0123456789abcdef"[digest[i] & 15];
        }
        benchmark::DoNotOptimize(hex);
        benchmark::ClobberMemory();
    }
}

void signer(benchmark::State &state) {
    const std::string text = message(state);
    char hex[kHexSize];
    for (auto _ : state) {
        hmac_sha256_hex(text.c_str(), kKey, hex, sizeof hex);
        benchmark::DoNotOptimize(hex);
        benchmark::ClobberMemory();
    }
}

void sizes(benchmark::internal::Benchmark *bench) {
    bench->ArgName("bytes")->RangeMultiplier(4)->Range(64, 1 << 20)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(openssl_hmac)->Apply(sizes);
BENCHMARK(signer)->Apply(sizes);

}  // namespace

BENCHMARK_MAIN();
