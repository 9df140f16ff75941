// Any reply of the local service as the device's proxy settings.
// Input: a line with the proxy in use; then two replies, for two calls.
#include <algorithm>
#include <cstring>

#include "cloud_http/proxy.h"
#include "fuzz.h"
#include "replies.h"

namespace {

constexpr std::size_t kSize = sizeof g_proxy_server;

bool is_proxy(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    return text.size() == kSize - 1 ||  // truncated
           (colon != std::string_view::npos && colon + 1 < text.size() &&
            std::all_of(text.begin() + colon + 1, text.end(),
                        [](char c) { return c >= '0' && c <= '9'; }));
}

void read_settings(char *proxy) {
    const std::string before = proxy;
    const int result = c_cloud_proxy_get(proxy);
    REQUIRE(std::memchr(proxy, '\0', kSize) != nullptr);
    const std::string after = proxy;
    if (result == 0) {
        REQUIRE(is_proxy(after));
    } else {
        REQUIRE(result == -1);
        REQUIRE(after.empty() || after == before);
    }
}

void try_input(fuzz::Input input) {
    const std::unique_ptr<char[]> proxy = fuzz::zeroed(kSize);
    input.line().copy(proxy.get(), kSize - 1);
    fuzz::answer_with(input);
    read_settings(proxy.get());
    read_settings(proxy.get());
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};
