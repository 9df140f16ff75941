/*
 * The TFA service's endpoints: a built-in URL each, which a one-line file can override at run time.
 *
 * Getters: out is a buffer of 1024 bytes that the caller has zeroed beyond its current text. They
 * return 1 when out is null, else 0. A missing override file gives the deployment's default. Of an
 * override file the first word is taken, at most 1023 characters (an empty file leaves out as it
 * is); a word without "https://" anywhere in it gets "https://" before it: at most 255 characters
 * of the whole go over the word, without a terminator.
 *
 * Setters write url, at most 255 characters of it, as the override file. They return 0, or 1 when
 * the file cannot be opened or url is null.
 */
#ifndef CLOUDAGENT_CLOUD_HTTP_ENDPOINTS_H
#define CLOUDAGENT_CLOUD_HTTP_ENDPOINTS_H

#include "log/c_api.h"

CLOUD_API_BEGIN

/* Where upload URLs are asked for; override file /tmp/app/cloud_tmp/KDUMPS_file. */
int api_kdumps_server_get(char *out) CLOUD_NOEXCEPT;
int api_kdumps_server_set(const char *url) CLOUD_NOEXCEPT;

/* TFA authentication; override file /tmp/app/cloud_tmp/TFA_file. */
int api_TFA_get(char *out) CLOUD_NOEXCEPT;
int api_TFA_set(const char *url) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
