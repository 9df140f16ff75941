// The transfer options of the request to the cloud, in their order. The program is linked with
// --wrap=curl_easy_setopt.
#include <curl/curl.h>

#include <cstdarg>
#include <map>

#include "cloud_http/http_reply.h"
#include "cloud_time_test.h"

namespace {

std::vector<std::string> g_options;

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
    g_options.push_back(name_of(option) + " " + value_of(option, value));
    return __real_curl_easy_setopt(handle, option, value);
}

namespace {

class CloudTimeOptions : public CloudTimeTest {
  protected:
    // Of a request that nobody answers.
    static std::vector<std::string> options_for(const char *scheme) {
        g_options.clear();
        EXPECT_EQ(api_get_time(scheme, "127.0.0.1:9"), -1);
        return g_options;
    }
};

TEST_F(CloudTimeOptions, PlainRequestSetsNothingOfTls) {
    for (const std::string scheme : {"http", "HTTPS", "Https", "https ", "httpsx", "http"}) {
        EXPECT_EQ(
            options_for(scheme.c_str()),
            (std::vector<std::string>{"URL " + scheme + "://127.0.0.1:9/time", "FAILONERROR 1",
                                      "ERRORBUFFER set", "WRITEFUNCTION http_reply_write",
                                      "WRITEDATA set", "TIMEOUT 20", "CONNECTTIMEOUT 10"}))
            << scheme;
    }
}

TEST_F(CloudTimeOptions, HttpsDemandsAndVerifies) {
    EXPECT_EQ(
        options_for("https"),
        (std::vector<std::string>{
            "URL https://127.0.0.1:9/time", "FAILONERROR 1", "ERRORBUFFER set", "USE_SSL 3",
            "SSL_VERIFYPEER 1", "CAPATH /etc/ssl/certs/", "SSL_SESSIONID_CACHE 0",
            "WRITEFUNCTION http_reply_write", "WRITEDATA set", "TIMEOUT 20", "CONNECTTIMEOUT 10"}));
}

}  // namespace
