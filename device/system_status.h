/*
 * What the device says of itself: MAC address, memory, up-time.
 */
#ifndef CLOUDAGENT_DEVICE_SYSTEM_STATUS_H
#define CLOUDAGENT_DEVICE_SYSTEM_STATUS_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* Memory figures in kilobytes, as the kernel reports them. */
typedef struct MemInfo {
    uint32_t total_kb;          /* all of it */
    uint32_t used_kb;           /* total less free */
    uint32_t buffers_cached_kb; /* buffers and every kind of cache */
} MemInfo;

/*
 * Reads the MAC address from http://127.0.0.1:8000/api/system/status into sys_mac_addr and, without
 * ":", into sys_mac_addr_compact (state/device_identity.h); each is cut at 31 characters. Meant to
 * run once, before the credentials are read. Returns 0, or -1 with both texts as they were.
 */
int sn_get_mac_addr(void) CLOUD_NOEXCEPT;

/*
 * Reads /proc/meminfo. Buffers and every kind of "Cached:" are added to buffers_cached_kb, which
 * the caller zeroes beforehand. Returns 1, or 0 with *info untouched when the report cannot be
 * opened.
 */
int sn_get_mem_info(MemInfo *info) CLOUD_NOEXCEPT;

/*
 * Reads the up-time in seconds from http://127.0.0.1:8000/api/system/status into *out; -1 when the
 * status has no number "upTime", -2 when it cannot be read. Returns 0 always.
 */
int sn_get_sys_up_time(int32_t *out) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
