// Requests to the cloud, and the files that they depend on.
#include <cstring>
#include <utility>

#include "base/owned.h"
#include "cloud_http/endpoints.h"
#include "cloud_http/file_upload.h"
#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "deployment.h"
#include "operation.h"
#include "servers.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

constexpr const char *kDump = "/tmp/torture.dump";
constexpr const char *kContent = "the bytes of a dump";
constexpr const char *kDnsFile = "/tmp/curlDNSFile";
constexpr const char *kDownProxy =
    R"({"CloudProxySettings":{"enable":true,"proxyServer":"127.0.0.1","proxyServerPort":9}})";

// ---- Upload URL: only a reply that says "OK" leaves one, and then the right one ----

void prepare_url() { std::strcpy(KDUMPS_url, "https://tfa.test/dev/tfaapi/kdumps"); }

void ask_for_url() { g_result = api_TFA_post_data("{\"filename\": \"x.txt\"}"); }

std::string url_outcome() {
    const cloudagent::OwnedText url(std::exchange(g_upload_url, nullptr));
    g_detect_dns = 0;
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    without_file(kDnsFile);
    return transfer_result() + ", " +
           (!url                                      ? "no URL"
            : std::strcmp(url.get(), kUploadUrl) == 0 ? "a URL"
                                                      : url.get());
}

std::string dns_outcome() {
    const std::string outcome = result() + g_curl_dns_server;
    url_outcome();
    return outcome;
}

Operations url_rows() {
    const std::vector<std::string> url_or_none = {"done, a URL", "libcurl's code, no URL",
                                                  "-1, no URL"};
    return {
        {"api_TFA_post_data", prepare_url, ask_for_url, url_outcome, url_or_none,
         Reach::kNetworkFromCold},
        {"api_TFA_post_data, pinned name servers",
         [] {
             prepare_url();
             g_detect_dns = 1;
             world::write_file(kDnsFile, "127.0.0.1\n");
         },
         ask_for_url, url_outcome, url_or_none, Reach::kNetwork},
        // libc's resolver is renewed after each.
        {"api_TFA_post_data, an unknown host, twice",
         [] { std::strcpy(KDUMPS_url, "https://unknown.test/kdumps"); },
         [] {
             ask_for_url();
             ask_for_url();
         },
         url_outcome,
         {"libcurl's code, no URL"},
         Reach::kNetworkFromCold},
        // Settings that cannot be read mean no proxy, so the request may arrive after all.
        {"api_TFA_post_data, a proxy that is down",
         [] {
             prepare_url();
             world::write_file(kProxySettings, kDownProxy);
         },
         ask_for_url,
         url_outcome,
         {"libcurl's code, no URL", "done, a URL"},
         Reach::kNetwork},
        {"ReadCurlDnsFile",
         [] { world::write_file(kDnsFile, "192.0.2.7\nnext\n"); },
         CALL(ReadCurlDnsFile()),
         dns_outcome,
         {"0, 192.0.2.7\n", "-1, "}},
    };
}

// ---- Upload: the dump is on the device, or whole in the cloud, or both ----

void prepare_dump() {
    world::write_file(kDump, kContent);
    memory_returns_at_sleep(0, kDump);
}

std::string upload_outcome() {
    const std::string whole = std::string("'") + kContent + "'";
    const std::string stored = content_of(kStoredUpload);
    return (g_result == 1 ? "not opened" : transfer_result()) +
           (content_of(kDump) == whole ? ", kept" : ", gone") +
           (stored == whole    ? ", stored"
            : stored == "none" ? ", not stored"
                               : ", stored in part");
}

// Memory is back at that pause; until then a retried upload ends only when the file cannot be
// opened.
Operation retried_row(const char *situation, Reach reach, int flag, int pause,
                      const std::vector<std::string> &allowed_cold) {
    return {std::string("api_TFA_post_FILE, ") + situation,
            [=] {
                prepare_dump();
                memory_returns_at_sleep(pause, kDump);
            },
            CALL(api_TFA_post_FILE(kDump, kUploadUrl, flag)),
            upload_outcome,
            {"done, gone, stored", "not opened, kept, not stored", "not opened, kept, stored"},
            reach,
            allowed_cold};
}

Operations upload_rows() {
    return {
        {"api_TFA_post_FILE, once",
         prepare_dump,
         CALL(api_TFA_post_FILE(kDump, kUploadUrl, 0)),
         upload_outcome,
         {"done, gone, stored", "libcurl's code, kept, stored", "libcurl's code, kept, not stored",
          "not opened, kept, not stored"},
         Reach::kNetwork},
        retried_row("three times, memory back at the second pause", Reach::kNetwork, 1, 2, {}),
        retried_row("until done, memory back at the third pause", Reach::kNetworkFromCold, 2, 3,
                    {"not opened, gone, not stored"}),
        {"api_TFA_post_FILE, nobody answers",
         prepare_dump,
         CALL(api_TFA_post_FILE(kDump, "https://127.0.0.1:9/", 0)),
         upload_outcome,
         {"libcurl's code, kept, not stored", "not opened, kept, not stored"},
         Reach::kNetwork},
        {"api_TFA_post_FILE, no such file",
         [] { without_file(kDump); },
         CALL(api_TFA_post_FILE(kDump, kUploadUrl, 2)),
         upload_outcome,
         {"not opened, gone, not stored"}},
    };
}

// ---- Endpoints ----

Operation endpoint_getter(const char *function, int (*get)(char *), const std::string &path,
                          const char *fallback) {
    return {function,
            [=] { world::write_file(path, "host/path"); },
            CALL(get(g_text)),
            [=] {
                without_file(path);
                return result_and_text();
            },
            {"0, https://host/path", std::string("0, https://" CLOUD_TFA_HOST) + fallback}};
}

Operation endpoint_setter(const char *function, int (*set)(const char *), const std::string &path) {
    return {function,
            [=] { world::write_file(path, "old"); },
            CALL(set("https://new/")),
            [=] { return result() + taken(path); },
            {"0, 'https://new/'", "1, 'old'"}};
}

Operations endpoint_rows() {
    const std::string kdumps = kStatus + "KDUMPS_file";
    const std::string authentication = kStatus + "TFA_file";
    return {
        endpoint_getter("api_kdumps_server_get", api_kdumps_server_get, kdumps,
                        "/dev/tfaapi/kdumps"),
        endpoint_setter("api_kdumps_server_set", api_kdumps_server_set, kdumps),
        endpoint_getter("api_TFA_get", api_TFA_get, authentication, "/dev/tfaapi/auth"),
        endpoint_setter("api_TFA_set", api_TFA_set, authentication),
    };
}

}  // namespace

Operations cloud_operations() { return joined({url_rows(), upload_rows(), endpoint_rows()}); }
