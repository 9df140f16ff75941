/// Sends a local file to an upload URL. @file
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// PUTs the file at path filename to uploadUrl, using the client certificate CRT and its KEY in the
/// working directory and the device's proxy if one is configured, and following redirects. Removes
/// the file after a completed transfer, whatever the HTTP status. libcurl's trace goes to standard
/// error.
///
/// flag: how often a failing transfer is tried. 0: once; 1: up to three times; other: until it
/// completes. Unless flag is 0, each failure is followed by a sleep of 10 seconds, also the last.
///
/// Returns 0 for HTTP status 200, any other status, libcurl's code of the last failed transfer, or
/// 1 when an attempt cannot open the file or read its size. Sizes are logged as signed 32-bit
/// numbers.
int api_TFA_post_FILE(const char *filename, const char *uploadUrl, int flag) CLOUD_NOEXCEPT;

CLOUD_API_END
