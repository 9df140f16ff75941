/// Sets the device's clock from the cloud. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Asks scheme://host/time for the time. If http://127.0.0.1:8000/api/system/settings/time can be
/// read, PATCHes the time there as "manualTime", without its last character and at most 98
/// characters long; the body is cut at 99.
///
/// scheme: exactly "https" verifies the server against /etc/ssl/certs/; any other sets no TLS
/// option. host: name, and the port if it is not the scheme's. The URL is cut at 255 characters.
/// Uses no proxy. The timeout is 20 seconds, for connecting 10.
///
/// Always returns -1: success shows in the log and in the device's clock.
int api_get_time(const char *scheme, const char *host) CLOUD_NOEXCEPT;

CLOUD_API_END
