/// The cloud proxy that the device's local service publishes. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// The proxy in use, "host:port", NUL-terminated; empty at start. For c_cloud_proxy_get.
extern char g_proxy_server[160];

/// Asks http://127.0.0.1:8000/api/system/cloud_proxy which proxy to use for the next request.
///
/// proxy_string: 160 bytes, NUL-terminated on entry, normally g_proxy_server.
/// Returns 0 when a proxy is configured: proxy_string is "host:port" (default port 80), cut at 159
/// characters. Returns -1 when no proxy is to be used: proxy_string is empty if the proxy is
/// disabled, "none" or empty, and unchanged if the settings cannot be read.
int c_cloud_proxy_get(char *proxy_string) CLOUD_NOEXCEPT;

CLOUD_API_END
