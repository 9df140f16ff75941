/*
 * The cloud proxy that the device's local service publishes.
 */
#ifndef CLOUDAGENT_CLOUD_HTTP_PROXY_H
#define CLOUDAGENT_CLOUD_HTTP_PROXY_H

#include "log/c_api.h"

CLOUD_API_BEGIN

/* The proxy in use as "host:port", NUL-terminated; empty at start. Kept by c_cloud_proxy_get. */
extern char g_proxy_server[160];

/*
 * Asks http://127.0.0.1:8000/api/system/cloud_proxy which proxy to use for the next request.
 *
 * proxy_string: the caller's 160 bytes, NUL-terminated on entry, in practice g_proxy_server.
 * Returns 0 when a proxy is configured: proxy_string then holds "host:port" (port 80 where none is
 * given; a longer text is cut at 159 characters). Returns -1 when no proxy is to be used:
 * proxy_string is empty when the proxy is switched off or "none", and unchanged when the settings
 * cannot be read.
 */
int c_cloud_proxy_get(char *proxy_string) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
