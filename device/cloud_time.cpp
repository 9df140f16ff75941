#include "device/cloud_time.h"

#include <cstring>

#include "cloud_http/curl_http.h"
#include "cloud_http/local_service.h"
#include "cloud_http/transfer.h"
#include "log/log.h"
#include "support/fixed_text.h"

namespace {

constexpr const char *kSettingsUrl = LOCAL_SERVICE "system/settings/time";

FixedText<256> time_url;

void set_options(Transfer &transfer, bool over_tls, char *error_text) noexcept {
    transfer.set_long(CURLOPT_FAILONERROR, 1);
    transfer.set_pointer(CURLOPT_ERRORBUFFER, error_text);
    if (over_tls) {
        transfer.set_long(CURLOPT_USE_SSL, CURLUSESSL_ALL);
        transfer.set_long(CURLOPT_SSL_VERIFYPEER, 1);
        transfer.set_text(CURLOPT_CAPATH, "/etc/ssl/certs/");
    }
}

// False when no 200 reply arrived, which is logged.
bool ask_cloud(bool over_tls, ReplyText &reply) noexcept {
    char error_text[CURL_ERROR_SIZE] = "";
    cloud_log("url: %s\n", time_url.c_str());
    Transfer transfer(time_url.c_str());
    set_options(transfer, over_tls, error_text);
    transfer.collect_reply(reply);
    transfer.set_long(CURLOPT_TIMEOUT, 20);
    transfer.set_long(CURLOPT_CONNECTTIMEOUT, 10);
    if (over_tls) {
        transfer.prepare_tls();
    }
    const CURLcode result = transfer.perform();
    curl_post_transfer_hook(transfer.handle());
    const long status = transfer.status();
    curl_info_dump(transfer.handle());
    transfer.clean_up();
    if (result != CURLE_OK || status != kHttpOk) {
        cloud_log("curl error (%d) %s\n", static_cast<int>(result), error_text);
        return false;
    }
    return true;
}

// Whether the device's own time settings can be read; their time zone only has to be there.
bool settings_readable() noexcept {
    const LocalPayload settings = read_local_payload(kSettingsUrl, "timeConfs", 1423);
    return settings.object != nullptr &&
           getJsonStringValueForKey(settings.object, "sntpTimeZone") != nullptr;
}

void set_manual_time(const char *cloud_time) noexcept {
    FixedText<100> time;
    time.format("%s", cloud_time);
    if (time.length() != 0) {
        time.data()[time.length() - 1] = '\0';  // the device's time has no zone letter at its end
    }
    FixedText<100> body;
    body.format(R"({"manualTime":"%s%s"})", time.c_str(), "");
    http_patch(kSettingsUrl, body.c_str(), nullptr);
}

}  // namespace

int api_get_time(const char *scheme, const char *host) noexcept {
    constexpr int kResult = -1;
    time_url.format("%s://%s/time", scheme, host);
    ReplyText reply;
    if (!ask_cloud(scheme != nullptr && std::strcmp(scheme, "https") == 0, reply)) {
        return kResult;
    }
    if (reply.get() == nullptr) {
        cloud_log("empty reply from time API ?!\n");
        return kResult;
    }
    cloud_log("\n\n %s json (%lu bytes):\n%s\n", __func__, static_cast<unsigned long>(reply.size()),
              reply.get());
    const OwnedJson document(parseJsonText(reply.get()));
    const char *const time = document ? getJsonStringValueForKey(document.get(), "time") : nullptr;
    if (time != nullptr && settings_readable()) {
        set_manual_time(time);
    }
    return kResult;
}
