/*
 * The device's MAC address as process-wide texts. Both are empty until the MAC probe of
 * device/system_status.h has succeeded once; credentials and nonces read them.
 */
#ifndef CLOUDAGENT_STATE_DEVICE_IDENTITY_H
#define CLOUDAGENT_STATE_DEVICE_IDENTITY_H

#include "log/c_api.h"

CLOUD_API_BEGIN

/* The address as the local service reports it, for example 88:dc:96:01:02:03; NUL-terminated. */
extern char sys_mac_addr[32];

/* The same address without ":", for example 88dc96010203; NUL-terminated. */
extern char sys_mac_addr_compact[32];

CLOUD_API_END

#endif
