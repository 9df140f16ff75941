/*
 * Plain requests to the device's local management service, and two hooks on a transfer.
 *
 * These requests carry no time-out, certificate, proxy or header setting. The results are libcurl's
 * codes, 0 for success; an HTTP error status with a body is a success and the body is handed over.
 * Nothing is retried. libcurl is initialised once a process, by start_processing
 * (kdump/job_guard.h) or by the caller.
 */
#ifndef CLOUDAGENT_CLOUD_HTTP_CURL_HTTP_H
#define CLOUDAGENT_CLOUD_HTTP_CURL_HTTP_H

#include <curl/curl.h>
#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* Failed transfers of curl_http since the start of the process. */
extern uint32_t curl_http_fail_count;

/*
 * One request. Every method but exactly "GET" sends body (a null body counts as empty).
 * out: receives the reply text, null when nothing arrived, for the caller to free(); text that
 * arrived before a failure is handed over too. With out null the text is released. A failed
 * transfer is logged.
 */
int curl_http(const char *method, const char *url, char **out, const char *body) CLOUD_NOEXCEPT;

/* curl_http with the method of the name. */
int http_get(const char *url, char **out) CLOUD_NOEXCEPT;
int http_post(const char *url, const char *body, char **out) CLOUD_NOEXCEPT;
int http_patch(const char *url, const char *body, char **out) CLOUD_NOEXCEPT;
int http_delete(const char *url, const char *body, char **out) CLOUD_NOEXCEPT;

/* Called right after each transfer to the cloud: a place for tracing. Does nothing. */
void curl_post_transfer_hook(CURL *handle) CLOUD_NOEXCEPT;

/* Logs the statistics of a finished transfer, a line a value that libcurl knows. handle: not yet
 * cleaned up. */
void curl_info_dump(CURL *handle) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
