/// The system LED, which two agents may set blinking, and the cloud registration flag. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Switches the LED by a PATCH of http://127.0.0.1:8000/api/system/settings/ledblink, whose outcome
/// is not examined. mode 1: creates /tmp/cloud_blinking and starts blinking. mode 0: removes that
/// file and stops blinking, unless the other agent's /tmp/zorbcon_blinking exists. mode 2: removes
/// both files and stops blinking. Any other mode is only logged.
/// Returns 0, or -1 when /tmp/cloud_blinking cannot be created.
int api_system_led_blink(uint32_t mode) CLOUD_NOEXCEPT;

/// Writes value to /mnt/data/iss_config/current_config/zorb_cloud_register_file and syncs it.
/// Returns 0, or -1 when the file cannot be created.
int api_zorb_cloud_register_set(int value) CLOUD_NOEXCEPT;

CLOUD_API_END
