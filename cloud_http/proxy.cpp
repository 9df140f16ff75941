#include "cloud_http/proxy.h"

#include <cstring>

#include "cloud_http/local_service.h"
#include "log/log.h"
#include "support/fixed_text.h"

char g_proxy_server[160] = "";

namespace {

using ProxyText = FixedText<sizeof g_proxy_server>;

// "none" and an empty server mean no proxy; a missing one leaves the port alone to be told.
bool is_no_server(const char *server) noexcept {
    return server != nullptr && (*server == '\0' || std::strcmp(server, "none") == 0);
}

ProxyText proxy_text(JsonNode *settings, const char *server) noexcept {
    ProxyText text;
    if (server != nullptr) {
        text.format("%s", server);
    }
    int found = 0;
    const int port = getJsonIntValueForKey(settings, "proxyServerPort", &found);
    if (found != 0 && port != 0) {
        text.append(":%u", static_cast<unsigned>(port));
    } else {
        text.append(":80");
    }
    return text;
}

}  // namespace

int c_cloud_proxy_get(char *proxy_string) noexcept {
    const LocalPayload settings =
        read_local_payload(LOCAL_SERVICE "system/cloud_proxy", "CloudProxySettings", 21);
    if (settings.object == nullptr) {
        cloud_log("\n\n%s %d\n\n\n", __func__, 23);
        return -1;
    }
    cloud_log("\n\n%s %d\n\n\n", __func__, 27);
    int found = 0;
    const int enabled = getJsonBoolValueForKey(settings.object, "enable", &found);
    if (found == 0) {
        return -1;
    }
    if (enabled == 0) {
        std::memset(proxy_string, 0, sizeof g_proxy_server);
        cloud_log("\n\n%s %d proxy_string \"%s\"\n\n\n", __func__, 32, proxy_string);
        return -1;
    }
    const char *const server = getJsonStringValueForKey(settings.object, "proxyServer");
    if (is_no_server(server)) {
        constexpr int kCleared = 4;  // only the first bytes: enough to make the text empty
        std::memset(proxy_string, 0, kCleared);
        cloud_log("\n\n%s %d sizeof(proxy_string) %d proxy_string \"%s\"\n\n\n", __func__, 41,
                  kCleared, proxy_string);
        return -1;
    }
    const ProxyText text = proxy_text(settings.object, server);
    if (std::strcmp(text.c_str(), proxy_string) == 0) {
        cloud_log("\n\n%s %d Proxy Server not change\n\n\n", __func__, 57);
        return 0;
    }
    std::memcpy(proxy_string, text.c_str(), text.length() + 1);
    cloud_log("\n\n%s %d Proxy Server change to \"%s\"\n\n\n", __func__, 60, proxy_string);
    return 0;
}
