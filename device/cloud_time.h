/*
 * Setting the device's clock from the cloud.
 */
#ifndef CLOUDAGENT_DEVICE_CLOUD_TIME_H
#define CLOUDAGENT_DEVICE_CLOUD_TIME_H

#include "log/c_api.h"

CLOUD_API_BEGIN

/*
 * Asks scheme://host/time for the time and, when the device's time settings are readable at
 * http://127.0.0.1:8000/api/system/settings/time, PATCHes it there as "manualTime", without its
 * last character and at most 98 characters long; the whole body is cut at 99.
 *
 * scheme: "https" exactly verifies the server against /etc/ssl/certs/; any other asks without TLS
 * settings. host: name, with a port if it is not the scheme's. The URL is cut at 255 characters.
 * No proxy is used; the request may take 20 seconds, its connection 10.
 *
 * Returns -1 always: success shows in the log and in the device's clock.
 */
int api_get_time(const char *scheme, const char *host) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
