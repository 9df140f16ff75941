/*
 * Sending a local file to an upload URL.
 */
#ifndef CLOUDAGENT_CLOUD_HTTP_FILE_UPLOAD_H
#define CLOUDAGENT_CLOUD_HTTP_FILE_UPLOAD_H

#include "log/c_api.h"

CLOUD_API_BEGIN

/*
 * PUTs the file at path filename to uploadUrl with the client certificate CRT and its KEY of the
 * working directory, through the device's proxy if one is configured, following redirects.
 * libcurl's trace goes to standard error.
 *
 * The file is removed as soon as a transfer has completed, whatever status the server answered.
 *
 * flag: what a failed transfer leads to. 0: nothing, the call ends. 1: up to three attempts. Any
 * other value: attempts without end. A failure with flag 1 or other is followed by 10 seconds of
 * sleep, the last one of flag 1 too.
 *
 * Returns 0 when the server answered 200, another HTTP status that it answered, libcurl's code of
 * the last failed transfer, or 1 when the file cannot be opened or its size not be read, at any
 * attempt. Sizes are logged as signed 32-bit numbers.
 */
int api_TFA_post_FILE(const char *filename, const char *uploadUrl, int flag) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
