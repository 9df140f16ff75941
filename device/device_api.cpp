#include "device/device_api.h"

#include <cstring>

#include "base/fixed_text.h"
#include "cloud_http/local_service.h"
#include "deployment.h"
#include "log/log.h"
#include "state/one_value_file.h"

using namespace cloudagent;

namespace {

using Site = FixedText<32>;
using Url = FixedText<256>;

// "https://<label>.<site>.<base domain>/v1/devices"
Url devices_url(const char *label) noexcept {
    constexpr const char *kSiteFile = "/mnt/data/iss_config/current_config/tillet_site";
    Site site;
    if (read_word(kSiteFile, site.data(), Site::size()) == FileValue::kNoFile) {
        site.format("production");
    }
    Url url;
    url.format("https://%s.%s.%s%s", label, site.c_str(), CLOUD_BASE_DOMAIN, "/v1/devices");
    return url;
}

}  // namespace

int api_tillet_host_get(char *out, uint32_t region) noexcept {
    cloud_log("%s %d \n", __func__, 799);
    const char *const label = region == 0 ? "tillet" : region == 1 ? "tillet-jp" : nullptr;
    if (label == nullptr) {
        return -1;
    }
    cloud_log("%s %d \n", __func__, 811);
    Url url = devices_url(label);
    cloud_log("%s %d \n", __func__, 822);
    const LocalPayload status =
        read_local_payload(LOCAL_SERVICE "system/status", "systemInfo", 824);
    if (status.object == nullptr) {
        cloud_log("%s %d \n", __func__, 829);
        return -1;
    }
    const char *const serial = getJsonStringValueForKey(status.object, "serialNo");
    if (serial == nullptr || out == nullptr) {
        return -1;
    }
    url.append("/%s", serial);
    std::memcpy(out, url.c_str(), url.length());
    return 0;
}
