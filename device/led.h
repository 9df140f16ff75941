/*
 * The system LED, which two agents may want to blink, and the cloud registration flag.
 */
#ifndef CLOUDAGENT_DEVICE_LED_H
#define CLOUDAGENT_DEVICE_LED_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/*
 * mode 1: this agent wants blinking: /tmp/cloud_blinking is created. mode 0: it no longer does:
 * that file is removed, and while /tmp/zorbcon_blinking exists the LED goes on blinking. mode 2:
 * nobody does: both are removed. Any other mode is logged only. The LED is switched by a PATCH of
 * http://127.0.0.1:8000/api/system/settings/ledblink, whose outcome is not examined.
 * Returns 0, or -1 when /tmp/cloud_blinking cannot be created.
 */
int api_system_led_blink(uint32_t mode) CLOUD_NOEXCEPT;

/* Writes value to /mnt/data/iss_config/current_config/zorb_cloud_register_file. Returns 0, or -1
 * when the file cannot be created. */
int api_zorb_cloud_register_set(int value) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
