/// @file
/// The TFA service's endpoints. Each has a built-in URL, which a one-line file can override.
///
/// Getters: out has 1024 bytes, zeroed by the caller behind its current text. Without an override
/// file it receives the deployment's default; otherwise the file's first word, at most 1023
/// characters, or nothing from an empty file. If out then lacks "https://", at most 255 characters
/// of "https://" and the word replace the word, without a terminator. Getters return 0, or 1 when
/// out is null.
///
/// Setters write at most 255 characters of url to the override file and sync it. They return 0, or
/// 1 when the file cannot be opened or url is null.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Requests for upload URLs; override file /tmp/app/cloud_tmp/KDUMPS_file.
int api_kdumps_server_get(char *out) CLOUD_NOEXCEPT;
int api_kdumps_server_set(const char *url) CLOUD_NOEXCEPT;  ///< Sets the override.

/// TFA authentication; override file /tmp/app/cloud_tmp/TFA_file.
int api_TFA_get(char *out) CLOUD_NOEXCEPT;
int api_TFA_set(const char *url) CLOUD_NOEXCEPT;  ///< Sets the override.

CLOUD_API_END
