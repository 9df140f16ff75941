// The JSON layer against bare cJSON: a status reply, growing arrays of them, numbers, texts.
#include <benchmark/benchmark.h>
#include <cjson/cJSON.h>

#include <cstdlib>
#include <string>

#include "json_parser/json_parser.h"

namespace {

constexpr const char *kStatusReply =
    R"({"restful_res": {"system": {"model": "AP-2201", "serial": "S2201A0001234",)"
    R"( "mac": "00:11:22:33:44:55", "firmware": "1.9.12-b7 \"stable\"", "uptime": 86412,)"
    R"( "load": [0.15, 0.25, 0.5], "memory": {"total": 514236, "free": 212344, "used": 301892},)"
    R"( "led": true, "registered": false, "controller": null},)"
    R"( "network": {"address": "192.168.1.20", "netmask": "255.255.255.0",)"
    R"( "gateway": "192.168.1.1", "dns": ["192.168.1.1", "192.168.1.2"], "mtu": 1500},)"
    R"( "proxy": {"enable": 0, "server": "proxy.example.com", "port": 3128}}})";

// The element alone for size 0, else an array of elements that fills the size.
std::string document(const benchmark::State &state, const std::string &element) {
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

void cjson(benchmark::State &state, const std::string &element) {
    const std::string text = document(state, element);
    for (auto _ : state) {
        cJSON *tree = cJSON_Parse(text.c_str());
        char *printed = cJSON_Print(tree);
        benchmark::DoNotOptimize(printed);
        std::free(printed);
        cJSON_Delete(tree);
    }
}

void layer(benchmark::State &state, const std::string &element) {
    const std::string text = document(state, element);
    for (auto _ : state) {
        JsonNode *tree = parseJsonText(text.c_str());
        char *printed = printJson(tree);
        benchmark::DoNotOptimize(printed);
        std::free(printed);
        deleteJson(tree);
    }
}

void growing(benchmark::internal::Benchmark *bench) {
    bench->ArgName("KiB")->Arg(0)->RangeMultiplier(4)->Range(16, 4096);
    bench->Unit(benchmark::kMicrosecond);
}

void megabyte(benchmark::internal::Benchmark *bench) {
    bench->ArgName("KiB")->Arg(1024)->Unit(benchmark::kMicrosecond);
}

const std::string kLongText = '"' + std::string(200, 'x') + '"';

BENCHMARK_CAPTURE(cjson, status, kStatusReply)->Apply(growing);
BENCHMARK_CAPTURE(layer, status, kStatusReply)->Apply(growing);
BENCHMARK_CAPTURE(cjson, numbers, "12345,0.25,-7,1e9")->Apply(megabyte);
BENCHMARK_CAPTURE(layer, numbers, "12345,0.25,-7,1e9")->Apply(megabyte);
BENCHMARK_CAPTURE(cjson, texts, kLongText)->Apply(megabyte);
BENCHMARK_CAPTURE(layer, texts, kLongText)->Apply(megabyte);

}  // namespace

BENCHMARK_MAIN();
