/// The device's MAC address, memory and up-time. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Memory figures in kilobytes, as the kernel reports them.
typedef struct MemInfo {
    uint32_t total_kb;           ///< all of it
    uint32_t used_kb;            ///< total less free
    uint32_t buffers_cached_kb;  ///< buffers and every kind of cache
} MemInfo;

/// Reads the MAC address from http://127.0.0.1:8000/api/system/status into sys_mac_addr and, without
/// ":", into sys_mac_addr_compact (state/device_identity.h); each is cut at 31 characters. Call it
/// once, before the credentials are read. Returns 0, or -1 with both texts unchanged.
int sn_get_mac_addr(void) CLOUD_NOEXCEPT;

/// Reads /proc/meminfo. Adds buffers and every kind of "Cached:" to buffers_cached_kb, which the
/// caller zeroes first. Returns 1, or 0 with *info unchanged when the file cannot be opened.
int sn_get_mem_info(MemInfo *info) CLOUD_NOEXCEPT;

/// Reads the up-time in seconds from http://127.0.0.1:8000/api/system/status into *out; -1 when the
/// status has no number "upTime", -2 when it cannot be read. Always returns 0.
int sn_get_sys_up_time(int32_t *out) CLOUD_NOEXCEPT;

CLOUD_API_END
