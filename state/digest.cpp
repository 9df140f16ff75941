// The public interface uses SHA256_CTX, whose functions OpenSSL 3 deprecates.
#define OPENSSL_SUPPRESS_DEPRECATED

#include "state/digest.h"

#include <openssl/crypto.h>
#include <openssl/md5.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

#include "state/device_identity.h"

unsigned char hmac_ipad[64];
unsigned char hmac_opad[64];

namespace {

constexpr std::size_t kBlock = sizeof hmac_ipad;

void start_hash(SHA256_CTX *context, bool sha224) noexcept {
    (sha224 ? SHA224_Init : SHA256_Init)(context);
}

}  // namespace

void hmac_sha256_init(SHA256_CTX *context, const unsigned char *key, int32_t len,
                      int sha224) noexcept {
    unsigned char hashed_key[SHA256_DIGEST_LENGTH];
    std::size_t length = len > 0 ? static_cast<std::size_t>(len) : 0;
    if (len < 0 || length > kBlock) {
        start_hash(context, sha224 != 0);
        SHA256_Update(context, key, length);
        SHA256_Final(hashed_key, context);
        key = hashed_key;
        length = sha224 != 0 ? SHA224_DIGEST_LENGTH : SHA256_DIGEST_LENGTH;
    }
    std::memset(hmac_ipad, 0x36, kBlock);
    std::memset(hmac_opad, 0x5C, kBlock);
    for (std::size_t i = 0; i < length; ++i) {
        hmac_ipad[i] ^= key[i];
        hmac_opad[i] ^= key[i];
    }
    start_hash(context, sha224 != 0);
    SHA256_Update(context, hmac_ipad, kBlock);
    OPENSSL_cleanse(hashed_key, sizeof hashed_key);
}

int hmac_sha256_update(SHA256_CTX *context, const void *data, size_t length) noexcept {
    return SHA256_Update(context, data, length);
}

void hmac_sha256_final(SHA256_CTX *context, unsigned char *digest) noexcept {
    unsigned char inner[SHA256_DIGEST_LENGTH];
    const std::size_t length = context->md_len;
    SHA256_Final(inner, context);
    start_hash(context, length == SHA224_DIGEST_LENGTH);
    SHA256_Update(context, hmac_opad, kBlock);
    SHA256_Update(context, inner, length);
    SHA256_Final(digest, context);
    OPENSSL_cleanse(inner, sizeof inner);
}

int hmac_sha256_hex(const char *message, const char *key, char *out, size_t size) noexcept {
    const char *const text = message != nullptr ? message : "";
    const char *const secret = key != nullptr ? key : "";
    unsigned char digest[128] = {};
    SHA256_CTX context;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): characters are bytes here
    hmac_sha256_init(&context, reinterpret_cast<const unsigned char *>(secret),
                     static_cast<int32_t>(std::strlen(secret)), 0);
    hmac_sha256_update(&context, text, std::strlen(text));
    hmac_sha256_final(&context, digest);
    OPENSSL_cleanse(&context, sizeof context);
    std::size_t length = 0;
    for (; length < std::size_t{2} * SHA256_DIGEST_LENGTH && length + 1 < size; ++length) {
        const unsigned byte = digest[length / 2];
        out[length] = "0123456789abcdef"[length % 2 == 0 ? byte >> 4 : byte & 0xF];
    }
    if (size != 0) {
        out[length] = '\0';
    }
    return 0;
}

int api_nonce_generate(uint32_t seed, unsigned char digest[16]) noexcept {
    constexpr std::size_t kMacBytes = 17;
    unsigned char material[64] = {};
    std::memcpy(material, sys_mac_addr, strnlen(sys_mac_addr, kMacBytes - 1));
    srandom(seed * static_cast<uint32_t>(syscall(SYS_gettid)));
    for (std::size_t i = kMacBytes; i < sizeof material; ++i) {
        material[i] = static_cast<unsigned char>(random());
    }
    MD5(material, sizeof material, digest);
    return 0;
}
