/*
 * The sequence number of the agents' cloud messages, and the API key and secret, bound to the
 * device: each is stored with sys_mac_addr_compact appended and handed back only while that suffix
 * matches. All three files are in /tmp/app/cloud_tmp/ and vanish at a reboot. No lock is taken.
 */
#ifndef CLOUDAGENT_STATE_CREDENTIALS_H
#define CLOUDAGENT_STATE_CREDENTIALS_H

#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/*
 * Reads /tmp/app/cloud_tmp/seqno_file. Returns 0 when it was read (a file without a number leaves
 * *value as it was), or 1 when it cannot be opened; *value is then 1, so a fresh device starts
 * at 1.
 */
int api_omcloud_seqno_get(int32_t *value) CLOUD_NOEXCEPT;

/* Writes the number as it is; counting up is the caller's. Returns 0, or 1 when the file cannot be
 * opened. */
int api_omcloud_seqno_set(int32_t value) CLOUD_NOEXCEPT;

/*
 * Store the API key or secret, a word without blanks, in /tmp/app/cloud_tmp/key_file or
 * secret_file. Value and MAC suffix are cut at 127 characters together. Return 0, or 1 when the
 * file cannot be opened or the text is null.
 */
int api_key_set(const char *key) CLOUD_NOEXCEPT;
int api_secret_set(const char *secret) CLOUD_NOEXCEPT;

/*
 * Read the key or secret back into out: at least 128 bytes, zeroed by the caller, since only the
 * value's own bytes are copied, without a terminator. Return 0, or 1 when out is null, the file
 * cannot be opened or the word does not end in this device's compact MAC; out is then untouched.
 */
int api_key_get(char *out) CLOUD_NOEXCEPT;
int api_secret_get(char *out) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
