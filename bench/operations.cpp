// Single operations of the library, each beside its alternative. Runs in a private world, where state
// files have their paths and the console is /dev/null. BENCH_ITERATIONS fixes how often each operation
// of the log and of state files runs, so that strace can count its system calls.
#include <benchmark/benchmark.h>
#include <cjson/cJSON.h>
#include <fcntl.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "cloud_http/http_reply.h"
#include "empty_call.h"
#include "json_parser/json_parser.h"
#include "log/log.h"
#include "state/credentials.h"
#include "state/digest.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"

namespace {

using benchmark::State;
using benchmark::internal::Benchmark;

#define MEASURED(name, ...)    \
    void name(State &state) {  \
        for (auto _ : state) { \
            __VA_ARGS__;       \
        }                      \
    }

// ---- digest: the signer against OpenSSL's HMAC with the fastest conversion to hex digits ----

constexpr const char *kKey = "0b1946c1-8f0e-4a57-9d0a-6d3a66a4f0d2";
constexpr std::size_t kHexSize = 65;

std::string message(const State &state) {
    return std::string(static_cast<std::size_t>(state.range(0)), 'm');
}

void openssl_hmac(State &state) {
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

void signer(State &state) {
    const std::string text = message(state);
    char hex[kHexSize];
    for (auto _ : state) {
        hmac_sha256_hex(text.c_str(), kKey, hex, sizeof hex);
        benchmark::DoNotOptimize(hex);
        benchmark::ClobberMemory();
    }
}

void messages(Benchmark *bench) {
    bench->ArgName("bytes")->RangeMultiplier(4)->Range(64, 1 << 20)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(openssl_hmac)->Apply(messages);
BENCHMARK(signer)->Apply(messages);

// ---- json: the layer against bare cJSON: a status reply, arrays of them, numbers, texts ----

constexpr const char *kStatusReply =
    R"({"restful_res": {"system": {"model": "AP-2201", "serial": "S2201A0001234",)"
    R"( "mac": "00:11:22:33:44:55", "firmware": "1.9.12-b7 \"stable\"", "uptime": 86412,)"
    R"( "load": [0.15, 0.25, 0.5], "memory": {"total": 514236, "free": 212344, "used": 301892},)"
    R"( "led": true, "registered": false, "controller": null},)"
    R"( "network": {"address": "192.168.1.20", "netmask": "255.255.255.0",)"
    R"( "gateway": "192.168.1.1", "dns": ["192.168.1.1", "192.168.1.2"], "mtu": 1500},)"
    R"( "proxy": {"enable": 0, "server": "proxy.example.com", "port": 3128}}})";

// The element alone for size 0, else an array of elements that fills the size.
std::string document(const State &state, const std::string &element) {
    const std::size_t size = static_cast<std::size_t>(state.range(0)) * 1024;
    if (size == 0) {
        return element;
    }
    std::string text = "[" + element;
    while (text.size() < size) {
        text += "," + element;
    }
    return text + "]";
}

template <auto Parse, auto Print, auto Delete>
void parse_and_print(State &state, const std::string &element) {
    const std::string text = document(state, element);
    for (auto _ : state) {
        auto *const tree = Parse(text.c_str());
        char *const printed = Print(tree);
        benchmark::DoNotOptimize(printed);
        std::free(printed);
        Delete(tree);
    }
}

constexpr auto *const cjson = parse_and_print<cJSON_Parse, cJSON_Print, cJSON_Delete>;
constexpr auto *const layer = parse_and_print<parseJsonText, printJson, deleteJson>;
const std::string kTexts = '"' + std::string(200, 'x') + '"';
constexpr const char *kNumbers = "12345,0.25,-7,1e9";

void growing(Benchmark *bench) {
    bench->ArgName("KiB")->Arg(0)->RangeMultiplier(4)->Range(16, 4096);
    bench->Unit(benchmark::kMicrosecond);
}

void megabyte(Benchmark *bench) { bench->ArgName("KiB")->Arg(1024)->Unit(benchmark::kMicrosecond); }

BENCHMARK_CAPTURE(cjson, status, kStatusReply)->Apply(growing);
BENCHMARK_CAPTURE(layer, status, kStatusReply)->Apply(growing);
BENCHMARK_CAPTURE(cjson, numbers, kNumbers)->Apply(megabyte);
BENCHMARK_CAPTURE(layer, numbers, kNumbers)->Apply(megabyte);
BENCHMARK_CAPTURE(cjson, texts, kTexts)->Apply(megabyte);
BENCHMARK_CAPTURE(layer, texts, kTexts)->Apply(megabyte);

// ---- log: a disabled line against an empty call, a written one against its system calls ----

#define LINE "%s %d filename %s\n", "api_TFA_post_FILE", 394, "/tmp/segmentrace.txt"
MEASURED(empty_call, empty_log(LINE))
MEASURED(log_off, cloud_log(LINE))

void log_to_console(State &state) {
    g_console_debug = 1;
    log_off(state);
    g_console_debug = 0;
}

void log_to_file(State &state) {
    std::snprintf(g_log_path, sizeof g_log_path, "/dev/null");
    g_file_log = 1;
    log_off(state);
    g_file_log = 0;
}

MEASURED(time_conversion, const std::time_t now = std::time(nullptr);
         benchmark::DoNotOptimize(std::ctime(&now)))

constexpr char kLine[] = "[Thu Jan  1 00:00:00 1970]api_TFA_post_FILE 394 filename x\n";
MEASURED(open_write_close, const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
         benchmark::DoNotOptimize(write(file, kLine, sizeof kLine - 1)); close(file))

void counted(Benchmark *bench) {
    if (const char *const asked = std::getenv("BENCH_ITERATIONS")) {
        bench->Iterations(std::atoi(asked));
    }
}

BENCHMARK(empty_call)->Apply(counted);
BENCHMARK(log_off)->Apply(counted);
BENCHMARK(time_conversion)->Apply(counted);
BENCHMARK(open_write_close)->Apply(counted);
BENCHMARK(log_to_console)->Apply(counted);
BENCHMARK(log_to_file)->Apply(counted);

// ---- reply: collecting a reply in memory against a realloc loop ----

constexpr std::size_t kChunk = 64 * 1024;

std::size_t chunks(const State &state) {
    return static_cast<std::size_t>(state.range(0)) * (1 << 20) / kChunk;
}

void plain_realloc(State &state) {
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
}

void reply_write(State &state) {
    std::vector<char> chunk(kChunk, 'x');
    for (auto _ : state) {
        HttpReply reply = {HTTP_REPLY_MEMORY, nullptr, 0};
        for (std::size_t i = 0; i < chunks(state); ++i) {
            http_reply_write(chunk.data(), 1, kChunk, &reply);
        }
        benchmark::DoNotOptimize(reply.data);
        std::free(reply.data);
    }
}

void replies(Benchmark *bench) {
    bench->ArgName("MiB")->RangeMultiplier(4)->Range(1, 256)->Unit(benchmark::kMillisecond);
}

BENCHMARK(plain_realloc)->Apply(replies);
BENCHMARK(reply_write)->Apply(replies);

// ---- state: a one-value state file against stdio ----

constexpr const char *kFile = "/tmp/app/cloud_tmp/seqno_file";

int g_value;

MEASURED(plain_write, std::FILE *const file = std::fopen(kFile, "w");
         std::fprintf(file, "%d", 4711); std::fflush(file); fsync(fileno(file)); std::fclose(file))
MEASURED(setter, benchmark::DoNotOptimize(api_omcloud_seqno_set(4711)))
MEASURED(plain_read, std::FILE *const file = std::fopen(kFile, "r");
         benchmark::DoNotOptimize(std::fscanf(file, "%d", &g_value)); std::fclose(file))
MEASURED(getter, benchmark::DoNotOptimize(api_omcloud_seqno_get(&g_value)))

BENCHMARK(plain_write)->Apply(counted);
BENCHMARK(setter)->Apply(counted);
BENCHMARK(plain_read)->Apply(counted);
BENCHMARK(getter)->Apply(counted);

}  // namespace

int main(int argc, char **argv) {
    world::enter();
    world::move_inside(argv);
    if (mount("/dev/null", "/dev/console", nullptr, MS_BIND, nullptr) != 0) {
        std::perror("/dev/console");
        return 1;
    }
    api_omcloud_seqno_set(4711);
    benchmark::Initialize(&argc, argv);
    return benchmark::RunSpecifiedBenchmarks() == 0 ? 1 : 0;
}
