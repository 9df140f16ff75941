// The transfer options of the request to the cloud, in their order, and what follows the transfer.
// The program is linked with --wrap for the functions noted here.
#include <curl/curl.h>

#include <cstdarg>
#include <map>

#include "cloud_http/curl_http.h"
#include "cloud_http/http_reply.h"
#include "cloud_time_test.h"

namespace {

std::vector<std::string> g_calls;

std::string name_of(CURLoption option) {
    static const std::map<CURLoption, const char *> names = {
        {CURLOPT_URL, "URL"},
        {CURLOPT_FAILONERROR, "FAILONERROR"},
        {CURLOPT_ERRORBUFFER, "ERRORBUFFER"},
        {CURLOPT_USE_SSL, "USE_SSL"},
        {CURLOPT_SSL_VERIFYPEER, "SSL_VERIFYPEER"},
        {CURLOPT_CAPATH, "CAPATH"},
        {CURLOPT_SSL_SESSIONID_CACHE, "SSL_SESSIONID_CACHE"},
        {CURLOPT_WRITEFUNCTION, "WRITEFUNCTION"},
        {CURLOPT_WRITEDATA, "WRITEDATA"},
        {CURLOPT_TIMEOUT, "TIMEOUT"},
        {CURLOPT_CONNECTTIMEOUT, "CONNECTTIMEOUT"},
    };
    const auto known = names.find(option);
    return known != names.end() ? known->second : std::to_string(option);
}

std::string value_of(CURLoption option, void *value) {
    if (option < CURLOPTTYPE_OBJECTPOINT) {
        return std::to_string(reinterpret_cast<long>(value));
    }
    if (option == CURLOPT_URL || option == CURLOPT_CAPATH) {
        return static_cast<const char *>(value);
    }
    if (option == CURLOPT_WRITEFUNCTION) {
        return value == reinterpret_cast<void *>(http_reply_write) ? "http_reply_write" : "?";
    }
    return value != nullptr ? "set" : "null";
}

}  // namespace

extern "C" CURLcode __real_curl_easy_setopt(CURL *handle, CURLoption option, ...);

// Every option of this program is a pointer or a long, which travel alike.
extern "C" CURLcode __wrap_curl_easy_setopt(CURL *handle, CURLoption option, ...) {
    std::va_list arguments;
    va_start(arguments, option);
    void *const value = va_arg(arguments, void *);
    va_end(arguments);
    g_calls.push_back(name_of(option) + " " + value_of(option, value));
    return __real_curl_easy_setopt(handle, option, value);
}

extern "C" void __real_curl_easy_cleanup(CURL *handle);
extern "C" void __wrap_curl_easy_cleanup(CURL *handle) {
    g_calls.emplace_back("cleanup");
    __real_curl_easy_cleanup(handle);
}

extern "C" void __wrap_curl_post_transfer_hook(CURL *) noexcept { g_calls.emplace_back("hook"); }

extern "C" void __wrap_curl_info_dump(CURL *) noexcept { g_calls.emplace_back("info"); }

extern "C" void __wrap_cloud_log(const char *format, ...) noexcept {
    g_calls.push_back(std::string("log ") + format);
}

namespace {

using Calls = std::vector<std::string>;

const Calls kBefore = {"FAILONERROR 1", "ERRORBUFFER set"};
const Calls kOfTls = {"USE_SSL 3", "SSL_VERIFYPEER 1", "CAPATH /etc/ssl/certs/"};
const Calls kBehind = {"WRITEFUNCTION http_reply_write", "WRITEDATA set", "TIMEOUT 20",
                       "CONNECTTIMEOUT 10"};
const Calls kAfterwards = {"hook", "info", "cleanup", "log curl error (%d) %s\n"};

// Of a request that nobody answers.
Calls calls_for(const std::string &scheme) {
    g_calls.clear();
    EXPECT_EQ(api_get_time(scheme.c_str(), "127.0.0.1:9"), -1);
    return g_calls;
}

Calls joined(const std::string &scheme, const std::vector<Calls> &parts) {
    Calls all = {"log url: %s\n", "URL " + scheme + "://127.0.0.1:9/time"};
    for (const Calls &part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

class CloudTimeOptions : public CloudTimeTest {};

TEST_F(CloudTimeOptions, PlainRequestSetsNothingOfTls) {
    for (const std::string scheme : {"http", "HTTPS", "Https", "https ", "httpsx", "http"})
        EXPECT_EQ(calls_for(scheme), joined(scheme, {kBefore, kBehind, kAfterwards}));
}

TEST_F(CloudTimeOptions, HttpsDemandsAndVerifies) {
    EXPECT_EQ(calls_for("https"),
              joined("https", {kBefore, kOfTls, kBehind, {"SSL_SESSIONID_CACHE 0"}, kAfterwards}));
}

}  // namespace
