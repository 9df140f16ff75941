// Requests to the cloud, and what they read beforehand.
#include <cstdlib>
#include <cstring>

#include "cloud_http/endpoints.h"
#include "cloud_http/file_upload.h"
#include "cloud_http/proxy.h"
#include "cloud_http/upload_url.h"
#include "deployment.h"
#include "operation.h"
#include "peers.h"
#include "testing/files.h"
#include "testing/paths.h"

namespace {

constexpr const char *kDump = "/tmp/torture.dump";
constexpr const char *kContent = "the bytes of a dump";
constexpr const char *kDnsFile = "/tmp/curlDNSFile";
constexpr const char *kDownProxy =
    R"({"CloudProxySettings":{"enable":true,"proxyServer":"127.0.0.1","proxyServerPort":9}})";

int g_result;
char g_endpoint[1024];

// Only a reply that says "OK" leaves a URL, and then the right one.
std::string url_outcome() {
    const std::string url = g_upload_url == nullptr                      ? "no URL"
                            : std::strcmp(g_upload_url, kUploadUrl) == 0 ? "a URL"
                                                                         : g_upload_url;
    std::free(g_upload_url);
    g_upload_url = nullptr;
    g_detect_dns = 0;
    std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
    std::memset(g_proxy_server, 0, sizeof g_proxy_server);
    clear_peers();
    return transfer_result(g_result) + ", " + url;
}

void prepare_cloud() {
    clear_peers();
    std::strcpy(KDUMPS_url, "https://tfa.test/dev/tfaapi/kdumps");
}

void ask_for_url() { g_result = api_TFA_post_data("{\"filename\": \"x.txt\"}"); }

const std::vector<std::string> kUrlOrNone = {"done, a URL", "libcurl's code, no URL", "-1, no URL"};

Operations url_rows() {
    return {
        networked_from_cold("api_TFA_post_data", prepare_cloud, ask_for_url, url_outcome,
                            kUrlOrNone),
        networked(
            "api_TFA_post_data, pinned name servers",
            [] {
                prepare_cloud();
                g_detect_dns = 1;
                world::write_file(kDnsFile, "127.0.0.1\n");
            },
            ask_for_url,
            [] {
                without_file(kDnsFile);
                return url_outcome();
            },
            kUrlOrNone),
        // libc's resolver is renewed after each.
        networked_from_cold(
            "api_TFA_post_data, an unknown host, twice",
            [] {
                prepare_cloud();
                std::strcpy(KDUMPS_url, "https://unknown.test/kdumps");
            },
            [] {
                ask_for_url();
                ask_for_url();
            },
            url_outcome, {"libcurl's code, no URL"}),
        // Settings that cannot be read mean no proxy, so the request may arrive after all.
        networked("api_TFA_post_data, a proxy that is down",
                  [] {
                      prepare_cloud();
                      world::write_file(kProxySettings, kDownProxy);
                  },
                  ask_for_url, url_outcome, {"libcurl's code, no URL", "done, a URL"}),
        alone(
            "ReadCurlDnsFile",
            [] {
                world::write_file(kDnsFile, "192.0.2.7\nnext\n");
                std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
            },
            [] { g_result = ReadCurlDnsFile(); },
            [] {
                const std::string servers = g_curl_dns_server;
                std::memset(g_curl_dns_server, 0, sizeof g_curl_dns_server);
                without_file(kDnsFile);
                return std::to_string(g_result) + ", " + servers;
            },
            {"0, 192.0.2.7\n", "-1, "}),
    };
}

// The dump is on the device, or whole in the cloud, or both.
std::string upload_outcome() {
    const std::string whole = std::string("'") + kContent + "'";
    const std::string stored = content_of(kStoredUpload);
    return (g_result == 1 ? "not opened" : transfer_result(g_result)) +
           (content_of(kDump) == whole ? ", kept" : ", gone") +
           (stored == whole    ? ", stored"
            : stored == "none" ? ", not stored"
                               : ", stored in part");
}

void prepare_dump() {
    clear_peers();
    world::write_file(kDump, kContent);
    memory_returns_at_sleep(0, kDump);
}

const std::vector<std::string> kSentOrKept = {"done, gone, stored", "libcurl's code, kept, stored",
                                              "libcurl's code, kept, not stored",
                                              "not opened, kept, not stored"};

// Ends without success only where the file cannot be opened, at the first or a later try.
const std::vector<std::string> kSentOrNotOpened = {
    "done, gone, stored", "not opened, kept, not stored", "not opened, kept, stored"};

Operation upload_row(const char *situation, Reach reach, int flag, int memory_returns,
                     const std::vector<std::string> &allowed,
                     const std::vector<std::string> &allowed_cold) {
    return {"api_TFA_post_FILE",
            situation,
            reach,
            [=] {
                prepare_dump();
                memory_returns_at_sleep(memory_returns, kDump);
            },
            [=] { g_result = api_TFA_post_FILE(kDump, kUploadUrl, flag); },
            upload_outcome,
            allowed,
            false,
            allowed_cold};
}

Operations upload_rows() {
    return {
        upload_row("once", Reach::kNetwork, 0, 0, kSentOrKept, {}),
        upload_row("three times, memory back at the second pause", Reach::kNetwork, 1, 2,
                   kSentOrNotOpened, {}),
        upload_row("until done, memory back at the third pause", Reach::kNetworkFromCold, 2, 3,
                   kSentOrNotOpened, {"not opened, gone, not stored"}),
        networked("api_TFA_post_FILE, nobody answers", prepare_dump,
                  [] { g_result = api_TFA_post_FILE(kDump, "https://127.0.0.1:9/", 0); },
                  upload_outcome,
                  {"libcurl's code, kept, not stored", "not opened, kept, not stored"}),
        alone(
            "api_TFA_post_FILE, no such file", [] { without_file(kDump); },
            [] { g_result = api_TFA_post_FILE(kDump, kUploadUrl, 2); }, upload_outcome,
            {"not opened, gone, not stored"}),
    };
}

template <class Getter>
Operation endpoint_getter(const char *function, Getter *getter, const std::string &path,
                          const char *fallback) {
    return alone(
        function,
        [=] {
            world::write_file(path, "host/path");
            std::memset(g_endpoint, 0, sizeof g_endpoint);
        },
        [=] { g_result = getter(g_endpoint); },
        [=] {
            without_file(path);
            return std::to_string(g_result) + ", " + g_endpoint;
        },
        {"0, https://host/path", std::string("0, https://" CLOUD_TFA_HOST) + fallback});
}

template <class Setter>
Operation endpoint_setter(const char *function, Setter *set, const std::string &path) {
    return alone(
        function, [=] { world::write_file(path, "old"); }, [=] { g_result = set("https://new/"); },
        [=] {
            const std::string content = content_of(path);
            without_file(path);
            return std::to_string(g_result) + ", " + content;
        },
        {"0, 'https://new/'", "1, 'old'"});
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
