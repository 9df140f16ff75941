// The JSON layer beside bare cJSON, over a status reply and documents of a megabyte.
#include <benchmark/benchmark.h>
#include <cjson/cJSON.h>

#include <cstdlib>
#include <string>

#include "json_parser/json_parser.h"

namespace {

std::string status_reply() {
    return R"({"restful_res": {"system": {"model": "AP-2201", "serial": "S2201A0001234",)"
           R"( "mac": "00:11:22:33:44:55", "firmware": "1.9.12-b7 \"stable\"", "uptime": 86412,)"
           R"( "load": [0.15, 0.25, 0.5], "memory": {"total": 514236, "free": 212344, "used": 301892},)"
           R"( "led": true, "registered": false, "controller": null},)"
           R"( "network": {"address": "192.168.1.20", "netmask": "255.255.255.0",)"
           R"( "gateway": "192.168.1.1", "dns": ["192.168.1.1", "192.168.1.2"], "mtu": 1500},)"
           R"( "proxy": {"enable": 0, "server": "proxy.example.com", "port": 3128}}})";
}

std::string repeated(const std::string &element, std::size_t size) {
    std::string text = "[" + element;
    while (text.size() < size) {
        text += "," + element;
    }
    return text + "]";
}

std::string document(int which) {
    constexpr std::size_t kMegabyte = 1 << 20;
    switch (which) {
        case 0:
            return status_reply();
        case 1:
            return repeated(status_reply(), kMegabyte);
        case 2:
            return repeated("12345,0.25,-7,1e9", kMegabyte);
        default:
            return repeated('"' + std::string(200, 'x') + '"', kMegabyte);
    }
}

void cjson(benchmark::State &state) {
    const std::string text = document(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        cJSON *tree = cJSON_Parse(text.c_str());
        char *printed = cJSON_Print(tree);
        benchmark::DoNotOptimize(printed);
        std::free(printed);
        cJSON_Delete(tree);
    }
}

template <JsonNode *(*Parse)(const char *) noexcept>
void layer(benchmark::State &state) {
    const std::string text = document(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        JsonNode *tree = Parse(text.c_str());
        char *printed = printJson(tree);
        benchmark::DoNotOptimize(printed);
        std::free(printed);
        deleteJson(tree);
    }
}

void documents(benchmark::internal::Benchmark *bench) {
    // 0: status reply; then a megabyte of 1: status replies, 2: numbers, 3: long texts
    bench->ArgName("document")->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(cjson)->Apply(documents);
BENCHMARK_TEMPLATE(layer, parseJsonText)->Apply(documents);

}  // namespace

BENCHMARK_MAIN();
