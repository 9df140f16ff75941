#include "device/led.h"

#include <unistd.h>

#include "cloud_http/curl_http.h"
#include "cloud_http/local_service.h"
#include "log/log.h"
#include "state/one_value_file.h"

using namespace cloudagent;

namespace {

constexpr const char *kCloudBlinking = "/tmp/cloud_blinking";
constexpr const char *kZorbconBlinking = "/tmp/zorbcon_blinking";
constexpr const char *kBlink = R"({"systemLED":"twinkle"})";
constexpr const char *kSteady = R"({"systemLED":"solidLight"})";

int switch_led(const char *body) noexcept {
    http_patch(LOCAL_SERVICE "system/settings/ledblink", body, nullptr);
    return 0;
}

}  // namespace

int api_system_led_blink(uint32_t mode) noexcept {
    switch (mode) {
        case 0:
            unlink(kCloudBlinking);
            return access(kZorbconBlinking, F_OK) == 0 ? 0 : switch_led(kSteady);
        case 1:
            return write_value(kCloudBlinking, "1") ? switch_led(kBlink) : -1;
        case 2:
            unlink(kZorbconBlinking);
            unlink(kCloudBlinking);
            return switch_led(kSteady);
        default:
            cloud_log(" %s %d \n", __func__, 1869);
            return 0;
    }
}

int api_zorb_cloud_register_set(int value) noexcept {
    constexpr const char *kFile = "/mnt/data/iss_config/current_config/zorb_cloud_register_file";
    return write_value(kFile, "%d", value) ? 0 : -1;
}
