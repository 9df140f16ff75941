/// @file
/// The sequence number of the agents' cloud messages, and the API key and secret. Key and secret
/// are bound to the device: they are stored with sys_mac_addr_compact appended and read back only
/// if that suffix matches. All three files are in /tmp/app/cloud_tmp/ and vanish at a reboot. No
/// lock is taken. Setters sync what they write, see state_files.h.
#pragma once

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// Reads /tmp/app/cloud_tmp/seqno_file. Returns 0 (without a number in the file *value is
/// unchanged), or 1 with *value set to 1 when the file cannot be opened, as on a fresh device.
int api_omcloud_seqno_get(int32_t *value) CLOUD_NOEXCEPT;

/// Writes the number; the caller increments it. Returns 0, or 1 when the file cannot be opened.
int api_omcloud_seqno_set(int32_t value) CLOUD_NOEXCEPT;

/// Store the API key or secret, a word without blanks, in /tmp/app/cloud_tmp/key_file or
/// secret_file. Value and MAC suffix are cut at 127 characters together. Return 0, or 1 when the
/// file cannot be opened or the text is null.
int api_key_set(const char *key) CLOUD_NOEXCEPT;
int api_secret_set(const char *secret) CLOUD_NOEXCEPT;  ///< Stores the secret.

/// Read the key or secret into out: 128 bytes, zeroed by the caller, since no terminator is
/// written. Return 0; or 1, with out unchanged, when out is null, the file cannot be opened or its
/// word does not end in this device's compact MAC.
int api_key_get(char *out) CLOUD_NOEXCEPT;
int api_secret_get(char *out) CLOUD_NOEXCEPT;  ///< Reads the secret.

CLOUD_API_END
