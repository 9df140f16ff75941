/// @file
/// Plain requests to the device's local management service, and two hooks on a transfer.
///
/// These requests set no timeout, certificate, proxy or header, and retry nothing. They return
/// libcurl's code, 0 for success; a reply with an HTTP error status is a success too. libcurl must
/// have been initialised once per process, by start_processing (kdump/job_guard.h) or by the
/// caller.
#pragma once

#include <curl/curl.h>

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Failed transfers of curl_http since the start of the process.
extern uint32_t curl_http_fail_count;

/// Sends one request. Every method except exactly "GET" sends body; null counts as empty.
/// out: receives the reply text, after a failure what arrived before it, or null when nothing did;
/// the caller free()s it. May be null. A failed transfer is logged.
int curl_http(const char *method, const char *url, char **out, const char *body) CLOUD_NOEXCEPT;

/// curl_http with the method that the name gives.
int http_get(const char *url, char **out) CLOUD_NOEXCEPT;
int http_post(const char *url, const char *body, char **out) CLOUD_NOEXCEPT;    ///< POST.
int http_patch(const char *url, const char *body, char **out) CLOUD_NOEXCEPT;   ///< PATCH.
int http_delete(const char *url, const char *body, char **out) CLOUD_NOEXCEPT;  ///< DELETE.

/// Called after each transfer to the cloud, as a place for tracing. Does nothing.
void curl_post_transfer_hook(CURL *handle) CLOUD_NOEXCEPT;

/// Logs the statistics of a finished transfer, one line per value. handle: before its clean-up.
void curl_info_dump(CURL *handle) CLOUD_NOEXCEPT;

CLOUD_API_END
