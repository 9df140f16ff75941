/*
 * Digests and small helpers: HMAC over SHA-256 or SHA-224, a nonce, a search, two file operations.
 *
 * Contexts and buffers are the caller's. There is one pair of HMAC pads for the whole process: two
 * HMACs may not be computed at the same time.
 */
#ifndef CLOUDAGENT_STATE_DIGEST_H
#define CLOUDAGENT_STATE_DIGEST_H

#include <openssl/sha.h>
#include <stddef.h>
#include <stdint.h>

#include "log/c_api.h"

CLOUD_API_BEGIN

/* The inner and outer pad of the HMAC under way; hmac_sha256_init fills both. */
extern unsigned char hmac_ipad[64];
extern unsigned char hmac_opad[64];

/*
 * Starts an HMAC (RFC 2104) in context.
 * key, len: the key and its length in bytes; a key longer than 64 bytes is hashed first, a negative
 * length stands for an empty key that is hashed first. sha224: non-zero for SHA-224, else SHA-256.
 */
void hmac_sha256_init(SHA256_CTX *context, const unsigned char *key, int32_t len,
                      int sha224) CLOUD_NOEXCEPT;

/* Feeds length bytes of data. Returns OpenSSL's result: 1 on success. */
int hmac_sha256_update(SHA256_CTX *context, const void *data, size_t length) CLOUD_NOEXCEPT;

/* Ends the HMAC: digest (32 bytes) receives 32 bytes, or 28 for SHA-224. */
void hmac_sha256_final(SHA256_CTX *context, unsigned char *digest) CLOUD_NOEXCEPT;

/*
 * HMAC-SHA-256 of a text under a text key, as 64 lower-case hex digits and a NUL in out.
 * size: bytes of out, 65 for the whole; less cuts the text. Null texts count as empty. Returns 0.
 */
int hmac_sha256_hex(const char *message, const char *key, char *out, size_t size) CLOUD_NOEXCEPT;

/*
 * A one-off value of 16 raw bytes in digest: MD5 over the first 16 characters of sys_mac_addr, a
 * zero and 47 random bytes. Reseeds the process's random() with seed times the calling thread's
 * kernel id: the same seed in the same thread gives the same digest. Returns 0.
 */
int api_nonce_generate(uint32_t seed, unsigned char digest[16]) CLOUD_NOEXCEPT;

/*
 * First place in haystack where needle stands, letter case aside (tolower); an empty needle is
 * found at the start. Null when there is none or an argument is null. The result points into
 * haystack.
 */
char *str_case_search(const char *haystack, const char *needle) CLOUD_NOEXCEPT;

/* 1 when path exists, 0 when it does not or is null; logs path and result. */
int api_file_exist(const char *path) CLOUD_NOEXCEPT;

/* Logs path, then creates the file (mode 0644) or empties an existing one; a null path is only
 * logged. Returns 0 always. */
int api_file_touch(const char *path) CLOUD_NOEXCEPT;

CLOUD_API_END

#endif
