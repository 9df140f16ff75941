/*
 * The address of this device in the cloud's device API.
 */
#ifndef CLOUDAGENT_DEVICE_DEVICE_API_H
#define CLOUDAGENT_DEVICE_DEVICE_API_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/*
 * Builds "https://<regional host>.<site>.<base domain>/v1/devices/<serial number>".
 *
 * out: at least 256 bytes, zeroed by the caller: at most 255 are written and no terminator.
 * Untouched on failure. region: 0 the main region, 1 the Japanese one; any other is refused. The
 * site is the first word, at most 31 characters, of
 * /mnt/data/iss_config/current_config/tillet_site, "production" when the file is missing; the
 * serial number is asked of http://127.0.0.1:8000/api/system/status.
 *
 * Returns 0, or -1 on any failure.
 */
int api_tillet_host_get(char *out, uint32_t region) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
