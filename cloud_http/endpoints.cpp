#include "cloud_http/endpoints.h"

#include <cstring>

#include "base/fixed_text.h"
#include "deployment.h"
#include "log/log.h"
#include "state/one_value_file.h"

using namespace cloudagent;

namespace {

struct Endpoint {
    const char *override_file;
    const char *default_url;
    const char *getter;
    int id;
};

constexpr Endpoint kKdumps = {"/tmp/app/cloud_tmp/KDUMPS_file",
                              "https://" CLOUD_TFA_HOST "/dev/tfaapi/kdumps",
                              "api_kdumps_server_get", 135};
constexpr Endpoint kAuthentication = {"/tmp/app/cloud_tmp/TFA_file",
                                      "https://" CLOUD_TFA_HOST "/dev/tfaapi/auth", "api_TFA_get",
                                      231};

using Url = FixedText<256>;
using CallersUrl = FixedText<1024>;

int get_endpoint(const Endpoint &endpoint, char *out) noexcept {
    if (out == nullptr) {
        return 1;
    }
    if (read_word(endpoint.override_file, out, CallersUrl::size()) == FileValue::kNoFile) {
        CallersUrl url;
        url.format("%s", endpoint.default_url);
        std::memcpy(out, url.c_str(), url.length() + 1);
        return 0;
    }
    if (std::strstr(out, "https://") != nullptr) {
        return 0;
    }
    Url url;
    url.format("https://%s", out);
    const std::size_t length = url.length();
    cloud_log("\n%s %d %d\n\n", endpoint.getter, endpoint.id, static_cast<int>(length));
    std::memcpy(out, url.c_str(), length);
    return 0;
}

int set_endpoint(const Endpoint &endpoint, const char *value) noexcept {
    if (value == nullptr) {
        return 1;
    }
    Url url;
    url.format("%s", value);
    return write_value(endpoint.override_file, "%s", url.c_str()) ? 0 : 1;
}

}  // namespace

int api_kdumps_server_get(char *out) noexcept { return get_endpoint(kKdumps, out); }
int api_kdumps_server_set(const char *url) noexcept { return set_endpoint(kKdumps, url); }
int api_TFA_get(char *out) noexcept { return get_endpoint(kAuthentication, out); }
int api_TFA_set(const char *url) noexcept { return set_endpoint(kAuthentication, url); }
