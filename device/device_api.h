/// The address of this device in the cloud's device API. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Builds "https://HOST.SITE.DOMAIN/v1/devices/SERIAL".
///
/// out: 256 bytes, zeroed by the caller; receives at most 255 characters and no terminator, and is
/// unchanged on failure. region: 0 for the main region, 1 for the Japanese one. The site is the
/// first word, at most 31 characters, of /mnt/data/iss_config/current_config/tillet_site, or
/// "production" without that file; http://127.0.0.1:8000/api/system/status gives the serial number.
///
/// Returns 0, or -1 on failure, also for any other region.
int api_tillet_host_get(char *out, uint32_t region) CLOUD_NOEXCEPT;

CLOUD_API_END
