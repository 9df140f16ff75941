#include "cloud_http/proxy.h"

#include <cstring>

#include "base/fixed_text.h"
#include "cloud_http/local_service.h"
#include "log/log.h"

using namespace cloudagent;

char g_proxy_server[160] = "";

namespace {

using ProxyText = FixedText<sizeof g_proxy_server>;

// Intentional quirk: without a server this is ":port".
ProxyText proxy_text(JsonNode *settings, const char *server) noexcept {
    ProxyText text;
    text.format("%s", server != nullptr ? server : "");
    int found = 0;
    const int port = getJsonIntValueForKey(settings, "proxyServerPort", &found);
    text.append(":%u", found != 0 && port != 0 ? static_cast<unsigned>(port) : 80U);
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
    if (server != nullptr && (*server == '\0' || std::strcmp(server, "none") == 0)) {
        constexpr int kCleared = 4;  // intentional quirk: enough to empty the text
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
