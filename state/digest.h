/// @file
/// Digests and small helpers: HMAC over SHA-256 or SHA-224, a nonce, a search, two file operations.
///
/// The caller owns contexts and buffers. The process has one pair of HMAC pads, so compute one HMAC
/// at a time.
#pragma once

#include <openssl/sha.h>

#include "../base/c_api.h"

CLOUD_API_BEGIN

/// The inner and outer pad of the current HMAC; hmac_sha256_init fills both.
extern unsigned char hmac_ipad[64];
extern unsigned char hmac_opad[64];  ///< The outer pad.

/// Starts an HMAC (RFC 2104) in context.
/// key, len: the key and its length in bytes; a key longer than 64 bytes is hashed first, and a
/// negative length means the hash of an empty key. sha224: non-zero for SHA-224, 0 for SHA-256.
void hmac_sha256_init(SHA256_CTX *context, const unsigned char *key, int32_t len,
                      int sha224) CLOUD_NOEXCEPT;

/// Feeds length bytes of data. Returns OpenSSL's result: 1 on success.
int hmac_sha256_update(SHA256_CTX *context, const void *data, size_t length) CLOUD_NOEXCEPT;

/// Ends the HMAC: digest (32 bytes) receives 32 bytes, or 28 for SHA-224.
void hmac_sha256_final(SHA256_CTX *context, unsigned char *digest) CLOUD_NOEXCEPT;

/// HMAC-SHA-256 of a text under a text key, as 64 lower-case hex digits and a NUL in out.
/// size: bytes of out, 65 for the whole text; less cuts it. Null texts count as empty. Returns 0.
int hmac_sha256_hex(const char *message, const char *key, char *out, size_t size) CLOUD_NOEXCEPT;

/// Stores a nonce of 16 bytes in digest: the MD5 of the first 16 characters of sys_mac_addr, a zero
/// and 47 random bytes. Seeds random() with seed times the kernel id of the calling thread: the
/// same seed in the same thread gives the same nonce. Returns 0.
int api_nonce_generate(uint32_t seed, unsigned char digest[16]) CLOUD_NOEXCEPT;

/// The first occurrence of needle in haystack, ignoring case (tolower); an empty needle occurs at
/// the start. Null when there is none or an argument is null. Points into haystack.
char *str_case_search(const char *haystack, const char *needle) CLOUD_NOEXCEPT;

/// 1 when path exists, 0 when it does not or is null; logs path and result.
int api_file_exist(const char *path) CLOUD_NOEXCEPT;

/// Logs path; then creates the file (mode 0644) or empties it, unless path is null. Returns 0.
int api_file_touch(const char *path) CLOUD_NOEXCEPT;

CLOUD_API_END
