// Requests to the local service, the proxy settings, and where replies go.
#include <curl/curl.h>

#include <cstring>

#include "base/owned.h"
#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_http/proxy.h"
#include "operation.h"
#include "peers.h"
#include "testing/files.h"

using cloudagent::OwnedText;

namespace {

constexpr const char *kStatusUrl = "http://127.0.0.1:8000/api/system/status";
constexpr const char *kLedUrl = "http://127.0.0.1:8000/api/system/settings/ledblink";
constexpr const char *kReplyFile = "/tmp/torture.reply";

int g_result;
std::size_t g_taken;
char *g_reply;
char g_chunk[] = "678";
char g_path[] = "/tmp/torture.reply";
HttpReply g_record;
CURL *g_handle;

const auto kNothing = [] { clear_peers(); };

// A failed request hands out nothing, or what had arrived: here all or nothing.
std::string request_outcome() {
    const OwnedText reply(g_reply);
    g_reply = nullptr;
    return transfer_result(g_result) + ", " +
           (!reply                  ? "null"
            : reply.get()[0] == '{' ? "a reply"
                                    : reply.get());
}

std::string changing_outcome() {
    const std::string reply = request_outcome();
    return reply + ", " + content_of(kLocalChange);
}

// A request that is sent may still fail while its reply comes in.
Operation request(const char *function, std::function<void()> call, const std::string &change) {
    const std::string sent = "'" + change + "'";
    return networked(
        function, kNothing, std::move(call), changing_outcome,
        {"done, a reply, " + sent, "libcurl's code, null, " + sent, "libcurl's code, null, none"});
}

std::string memory_outcome() {
    const std::string text = g_record.data != nullptr ? g_record.data : "null";
    std::free(g_record.data);
    return std::to_string(g_taken) + ", " + text + ", " + std::to_string(g_record.size);
}

void feed_record() { g_taken = http_reply_write(g_chunk, 1, 3, &g_record); }

Operations reply_rows() {
    return {
        alone("http_reply_write, first chunk",
              [] {
                  g_record = {HTTP_REPLY_MEMORY, nullptr, 0};
              },
              feed_record, memory_outcome, {"3, 678, 4", "0, null, 0"}),
        alone("http_reply_write, next chunk",
              [] {
                  g_record = {HTTP_REPLY_MEMORY, strdup("12345"), 6};
              },
              feed_record, memory_outcome, {"3, 12345678, 9", "0, null, 0"}),
        alone(
            "http_reply_write, file",
            [] {
                without_file(kReplyFile);
                g_record = {HTTP_REPLY_FILE, g_path, 0};
            },
            feed_record, [] { return std::to_string(g_taken) + ", " + content_of(kReplyFile); },
            {"3, '678'", "3, none"}),
        alone(
            "http_reply_write, no record", [] {},
            [] { g_taken = http_reply_write(g_chunk, 1, 3, nullptr); },
            [] { return std::to_string(g_taken) + ", " + console_text(); },
            {"3, reply ignored\n", "3, "}),
    };
}

Operations request_rows() {
    return {
        networked("curl_http, no reply wanted", kNothing,
                  [] { g_result = curl_http("GET", kStatusUrl, nullptr, nullptr); },
                  request_outcome, {"done, null", "libcurl's code, null"}),
        networked("curl_http, nobody answers", kNothing,
                  [] { g_result = curl_http("GET", "http://127.0.0.1:9/", &g_reply, nullptr); },
                  request_outcome, {"libcurl's code, null"}),
        networked_from_cold("http_get", kNothing, [] { g_result = http_get(kStatusUrl, &g_reply); },
                            request_outcome, {"done, a reply", "libcurl's code, null"}),
        request(
            "http_post", [] { g_result = http_post(kLedUrl, "{}", &g_reply); },
            "POST /api/system/settings/ledblink {}"),
        request(
            "http_patch", [] { g_result = http_patch(kLedUrl, "{}", &g_reply); },
            "PATCH /api/system/settings/ledblink {}"),
        request(
            "http_delete", [] { g_result = http_delete(kLedUrl, "{}", &g_reply); },
            "DELETE /api/system/settings/ledblink {}"),
    };
}

// A finished transfer's handle for the two hooks.
void prepare_handle() {
    g_handle = curl_easy_init();
    curl_easy_setopt(g_handle, CURLOPT_URL, "http://127.0.0.1:9/");
    curl_easy_perform(g_handle);
}

std::string handle_outcome(bool logs) {
    curl_easy_cleanup(g_handle);
    const std::string text = console_text();
    if (!logs)
        return text;
    return text.find("CURLINFO_LOCAL_PORT 0\n") != std::string::npos ? "to the last line"
                                                                     : "lines missing";
}

Operations hook_rows() {
    return {
        alone(
            "curl_post_transfer_hook", prepare_handle, [] { curl_post_transfer_hook(g_handle); },
            [] { return handle_outcome(false); }, {""}),
        alone(
            "curl_info_dump", prepare_handle, [] { curl_info_dump(g_handle); },
            [] { return handle_outcome(true); }, {"to the last line", "lines missing"}),
    };
}

Operation proxy_row(const char *situation, const char *settings, const char *known,
                    std::vector<std::string> allowed) {
    return {"c_cloud_proxy_get",
            situation,
            Reach::kNetwork,
            [=] {
                clear_peers();
                world::write_file(kProxySettings,
                                  std::string(R"({"CloudProxySettings":{)") + settings + "}}");
                std::memset(g_proxy_server, 0, sizeof g_proxy_server);
                std::strcpy(g_proxy_server, known);
            },
            [] { g_result = c_cloud_proxy_get(g_proxy_server); },
            [] {
                const std::string outcome = std::to_string(g_result) + ", " + g_proxy_server;
                g_proxy_server[0] = '\0';
                clear_peers();
                return outcome;
            },
            std::move(allowed)};
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
