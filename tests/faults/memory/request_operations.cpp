// Requests to the local service, the proxy settings, and the sinks of replies.
#include <curl/curl.h>

#include <cstring>
#include <utility>

#include "base/owned.h"
#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http/proxy.h"
#include "operation.h"
#include "servers.h"
#include "testing/files.h"

using cloudagent::OwnedText;

namespace {

constexpr const char *kStatusUrl = "http://127.0.0.1:8000/api/system/status";
constexpr const char *kLedUrl = "http://127.0.0.1:8000/api/system/settings/ledblink";

char *g_reply;
char g_chunk[] = "678";
char g_path[] = "/tmp/torture.reply";
HttpReply g_sink;
CURL *g_handle;

// ---- Replies ----

std::string memory_outcome() {
    const OwnedText text(g_sink.data);
    return result() + (text ? text.get() : "null") + ", " + std::to_string(g_sink.size);
}

Operations reply_rows() {
    const auto write = CALL(http_reply_write(g_chunk, 1, 3, &g_sink));
    return {
        {"http_reply_write, first chunk",
         [] {
             g_sink = {HTTP_REPLY_MEMORY, nullptr, 0};
         },
         write,
         memory_outcome,
         {"3, 678, 4", "0, null, 0"}},
        {"http_reply_write, next chunk",
         [] {
             g_sink = {HTTP_REPLY_MEMORY, strdup("12345"), 6};
         },
         write,
         memory_outcome,
         {"3, 12345678, 9", "0, null, 0"}},
        {"http_reply_write, file",
         [] {
             g_sink = {HTTP_REPLY_FILE, g_path, 0};
         },
         write,
         [] { return result() + taken(g_path); },
         {"3, '678'", "3, none"}},
        {"http_reply_write, no record",
         nothing,
         CALL(http_reply_write(g_chunk, 1, 3, nullptr)),
         [] { return result() + console_text(); },
         {"3, reply ignored\n", "3, "}},
    };
}

// ---- Requests: a failed one hands out no reply ----

std::string request_outcome() {
    const OwnedText reply(std::exchange(g_reply, nullptr));
    return transfer_result() + ", " +
           (!reply                  ? "null"
            : reply.get()[0] == '{' ? "a reply"
                                    : reply.get());
}

// A request that is sent may still fail while its reply arrives.
Operation changing_row(const char *function, const char *method, std::function<void()> call) {
    const std::string sent = std::string("'") + method + " /api/system/settings/ledblink {}'";
    return {
        function,
        nothing,
        std::move(call),
        [] { return request_outcome() + ", " + content_of(kLocalChange); },
        {"done, a reply, " + sent, "libcurl's code, null, " + sent, "libcurl's code, null, none"},
        Reach::kNetwork};
}

Operations request_rows() {
    return {
        {"curl_http, no reply wanted",
         nothing,
         CALL(curl_http("GET", kStatusUrl, nullptr, nullptr)),
         request_outcome,
         {"done, null", "libcurl's code, null"},
         Reach::kNetwork},
        {"curl_http, nobody answers",
         nothing,
         CALL(curl_http("GET", "http://127.0.0.1:9/", &g_reply, nullptr)),
         request_outcome,
         {"libcurl's code, null"},
         Reach::kNetwork},
        {"http_get",
         nothing,
         CALL(http_get(kStatusUrl, &g_reply)),
         request_outcome,
         {"done, a reply", "libcurl's code, null"},
         Reach::kNetworkFromCold},
        changing_row("http_post", "POST", CALL(http_post(kLedUrl, "{}", &g_reply))),
        changing_row("http_patch", "PATCH", CALL(http_patch(kLedUrl, "{}", &g_reply))),
        changing_row("http_delete", "DELETE", CALL(http_delete(kLedUrl, "{}", &g_reply))),
    };
}

// ---- Hooks, with the handle of a finished transfer ----

void prepare_handle() {
    g_handle = curl_easy_init();
    curl_easy_setopt(g_handle, CURLOPT_URL, "http://127.0.0.1:9/");
    curl_easy_perform(g_handle);
}

std::string hook_text() {
    curl_easy_cleanup(g_handle);
    return console_text();
}

std::string dump_outcome() {
    const bool whole = hook_text().find("CURLINFO_LOCAL_PORT 0\n") != std::string::npos;
    return whole ? "to the last line" : "lines missing";
}

Operations hook_rows() {
    return {
        {"curl_post_transfer_hook",
         prepare_handle,
         [] { curl_post_transfer_hook(g_handle); },
         hook_text,
         {""}},
        {"curl_info_dump",
         prepare_handle,
         [] { curl_info_dump(g_handle); },
         dump_outcome,
         {"to the last line", "lines missing"}},
    };
}

// ---- Proxy settings ----

Operation proxy_row(const char *situation, const char *settings, const char *known,
                    std::vector<std::string> allowed) {
    return {std::string("c_cloud_proxy_get, ") + situation,
            [=] {
                world::write_file(kProxySettings,
                                  std::string(R"({"CloudProxySettings":{)") + settings + "}}");
                std::memset(g_proxy_server, 0, sizeof g_proxy_server);
                std::strcpy(g_proxy_server, known);
            },
            CALL(c_cloud_proxy_get(g_proxy_server)),
            [] {
                const std::string outcome = result() + g_proxy_server;
                g_proxy_server[0] = '\0';
                return outcome;
            },
            std::move(allowed),
            Reach::kNetwork};
}

Operations proxy_rows() {
    const char *const on = R"("enable":true,"proxyServer":"10.1.1.1","proxyServerPort":3128)";
    return {
        proxy_row("a new one", on, "old:80", {"0, 10.1.1.1:3128", "-1, old:80"}),
        proxy_row("the same", on, "10.1.1.1:3128", {"0, 10.1.1.1:3128", "-1, 10.1.1.1:3128"}),
        proxy_row("switched off", R"("enable":false)", "old:80", {"-1, ", "-1, old:80"}),
    };
}

}  // namespace

Operations request_operations() {
    return joined({reply_rows(), request_rows(), hook_rows(), proxy_rows()});
}
