/// @file
/// The device's MAC address as process-wide texts, empty until sn_get_mac_addr
/// (device/system_status.h) has succeeded. Credentials and nonces read them.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// The address as the local service reports it, for example 88:dc:96:01:02:03; NUL-terminated.
extern char sys_mac_addr[32];

/// The same address without ":", for example 88dc96010203; NUL-terminated.
extern char sys_mac_addr_compact[32];

CLOUD_API_END
