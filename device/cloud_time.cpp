#include "device/cloud_time.h"

#include <cstring>

#include "base/fixed_text.h"
#include "cloud_http/curl_http.h"
#include "cloud_http/local_service.h"
#include "cloud_http/request.h"
#include "log/log.h"

using namespace cloudagent;

namespace {

constexpr const char *kSettingsUrl = LOCAL_SERVICE "system/settings/time";

FixedText<256> time_url;

// False when no 200 reply arrived, which is logged.
bool ask_cloud(Request &request, bool over_tls) noexcept {
    char error_text[CURL_ERROR_SIZE] = "";
    request.set_long(CURLOPT_FAILONERROR, 1);
    request.set_pointer(CURLOPT_ERRORBUFFER, error_text);
    if (over_tls) {
        request.set_long(CURLOPT_USE_SSL, CURLUSESSL_ALL);
        request.set_long(CURLOPT_SSL_VERIFYPEER, 1);
        request.set_text(CURLOPT_CAPATH, kAuthorities);
    }
    request.collect_reply();
    request.set_long(CURLOPT_TIMEOUT, 20);
    request.set_long(CURLOPT_CONNECTTIMEOUT, 10);
    if (over_tls) {
        request.prepare_tls();
    }
    const CURLcode result = request.perform();
    curl_post_transfer_hook(request.handle());
    const long status = request.status();
    curl_info_dump(request.handle());
    request.clean_up();
    if (result != CURLE_OK || status != kHttpOk) {
        cloud_log("curl error (%d) %s\n", static_cast<int>(result), error_text);
        return false;
    }
    return true;
}

// The time zone only has to exist: it shows that the device's time settings can be read.
bool read_settings() noexcept {
    const LocalPayload settings = read_local_payload(kSettingsUrl, "timeConfs", 1423);
    return getJsonStringValueForKey(settings.object, "sntpTimeZone") != nullptr;
}

void set_manual_time(const char *cloud_time) noexcept {
    FixedText<100> time;
    time.format("%s", cloud_time);
    if (time.length() != 0) {
        time.data()[time.length() - 1] = '\0';  // the device takes no zone letter
    }
    FixedText<100> body;
    body.format(R"({"manualTime":"%s%s"})", time.c_str(), "");
    http_patch(kSettingsUrl, body.c_str(), nullptr);
}

}  // namespace

int api_get_time(const char *scheme, const char *host) noexcept {
    constexpr int kResult = -1;
    time_url.format("%s://%s/time", scheme, host);
    cloud_log("url: %s\n", time_url.c_str());
    Request request(time_url.c_str());
    if (!ask_cloud(request, scheme != nullptr && std::strcmp(scheme, "https") == 0)) {
        return kResult;
    }
    const HttpReply &reply = request.reply();
    if (reply.data == nullptr) {
        cloud_log("empty reply from time API ?!\n");
        return kResult;
    }
    cloud_log("\n\n %s json (%lu bytes):\n%s\n", __func__, static_cast<unsigned long>(reply.size),
              reply.data);
    const OwnedJson document(parseJsonText(reply.data));
    const char *const time = getJsonStringValueForKey(document.get(), "time");
    if (time != nullptr && read_settings()) {
        set_manual_time(time);
    }
    return kResult;
}
