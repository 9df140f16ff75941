/*
 * Asking the cloud's TFA service for a one-time upload URL.
 */
#ifndef CLOUDAGENT_CLOUD_HTTP_UPLOAD_URL_H
#define CLOUDAGENT_CLOUD_HTTP_UPLOAD_URL_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* The URL that is asked, NUL-terminated; filled by start_processing (kdump/job_guard.h). */
extern char KDUMPS_url[1024];

/* The upload URL of the last "OK" reply: heap text that the caller frees; null at start. A new one
 * replaces the pointer without freeing the text before it. */
extern char *g_upload_url;

/* DNS servers that requests are pinned to, NUL-terminated; empty until ReadCurlDnsFile has read a
 * line. */
extern char g_curl_dns_server[64];

/* Non-zero: pin the DNS servers. The caller loads it with api_cloud_DetectDNS_get
 * (state/state_files.h). */
extern uint32_t g_detect_dns;

/*
 * POSTs body, a JSON text, to KDUMPS_url with the client certificate CRT and its KEY of the working
 * directory, through the device's proxy if one is configured, following redirects. Not reentrant.
 *
 * Returns 0 when a 200 reply with a JSON "message" arrived; g_upload_url is then set only if the
 * message is "OK" and an "upload_url" is there. Otherwise it is unchanged and the result is
 * libcurl's code of the failed transfer, the HTTP status that is not 200, or -1 for a 200 reply
 * that is empty, not JSON or without "message", and when memory for the URL runs out.
 */
int api_TFA_post_data(const char *body) CLOUD_NOEXCEPT;

/*
 * Reads the first line of /tmp/curlDNSFile, at most 63 characters, its newline included, into
 * g_curl_dns_server. Returns 0, or -1 when the file cannot be opened (which is logged) or is empty.
 */
int ReadCurlDnsFile(void) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
