/// Requests a one-time upload URL from the cloud's TFA service. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// The URL to ask, NUL-terminated; filled by start_processing (kdump/job_guard.h).
extern char KDUMPS_url[1024];

/// The upload URL of the last "OK" reply, which the caller free()s; null at start. The next reply
/// replaces the pointer without freeing the text.
extern char *g_upload_url;

/// DNS servers to use, NUL-terminated; empty until ReadCurlDnsFile has read a line.
extern char g_curl_dns_server[64];

/// Non-zero: use g_curl_dns_server. Load it with api_cloud_DetectDNS_get (state/state_files.h).
extern uint32_t g_detect_dns;

/// POSTs body, a JSON text, to KDUMPS_url, using the client certificate CRT and its KEY in the
/// working directory and the device's proxy if one is configured, and following redirects. Not
/// reentrant.
///
/// Returns 0 for a 200 reply with a JSON "message". Only if that is "OK" and has an "upload_url" is
/// g_upload_url set: test it. On failure returns libcurl's code, the HTTP status if it is not 200,
/// or -1 for a 200 reply that is empty, not JSON or without "message", or for lack of memory.
int api_TFA_post_data(const char *body) CLOUD_NOEXCEPT;

/// Reads the first line of /tmp/curlDNSFile, at most 63 characters, its newline included, into
/// g_curl_dns_server. Returns 0, or -1 when the file cannot be opened (which is logged) or is
/// empty.
int ReadCurlDnsFile(void) CLOUD_NOEXCEPT;

CLOUD_API_END
