// hmac_sha256_hex.
#include <gmock/gmock.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "digest_text.h"
#include "state/digest.h"
#include "testing/calls.h"
#include "testing/guarded.h"

namespace {

const std::string kSigned = "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843";

std::string sign(const char *message, const char *key) {
    Guarded<65> out;
    EXPECT_EQ(hmac_sha256_hex(message, key, out.data(), 65), 0);
    EXPECT_EQ(out.data()[64], '\0');
    EXPECT_TRUE(out.untouched_from(65));
    return out.first(64);
}

TEST(Signer, TakesTheMessageFirstAndTheKeySecond) {
    EXPECT_EQ(sign("what do ya want for nothing?", "Jefe"), kSigned);
    EXPECT_NE(sign("Jefe", "what do ya want for nothing?"), kSigned);
}

TEST(Signer, EqualsOpensslForKeysAroundTheBlockSize) {
    for (const size_t length : {0u, 1u, 63u, 64u, 65u, 131u}) {
        const std::string key(length, 'k');
        unsigned char digest[32];
        HMAC(EVP_sha256(), key.data(), static_cast<int>(length), bytes_of("message"), 7, digest,
             nullptr);
        EXPECT_EQ(sign("message", key.c_str()), as_hex({reinterpret_cast<char *>(digest), 32}));
    }
}

TEST(Signer, WritesNoMoreThanItsBufferTakes) {
    for (size_t size = 0; size <= 80; ++size) {
        Guarded<80> out;
        EXPECT_EQ(hmac_sha256_hex("what do ya want for nothing?", "Jefe", out.data(), size), 0);
        const size_t digits = size == 0 ? 0 : std::min(size - 1, kSigned.size());
        EXPECT_EQ(out.first(digits), kSigned.substr(0, digits));
        EXPECT_TRUE(out.untouched_from(std::min(size, kSigned.size() + 1))) << size;
        if (size > 0) {
            EXPECT_EQ(out.data()[digits], '\0') << size;
        }
    }
}

TEST(Signer, NullTextsCountAsEmpty) {
    EXPECT_EQ(sign(nullptr, nullptr), sign("", ""));
    EXPECT_EQ(sign(nullptr, "k"), sign("", "k"));
    EXPECT_EQ(sign("m", nullptr), sign("m", ""));
}

TEST(Signer, WipesTheContextAndBothTemporaries) {
    std::vector<size_t> wiped;
    calls::seen<OPENSSL_cleanse>() = [&](void *, size_t size) { wiped.push_back(size); };
    sign("m", "k");
    calls::seen<OPENSSL_cleanse>() = nullptr;
    EXPECT_EQ(std::count(wiped.begin(), wiped.end(), sizeof(SHA256_CTX)), 1);
    EXPECT_EQ(std::count(wiped.begin(), wiped.end(), 32u), 2)
        << "the hashed key and the inner digest";
}

}  // namespace
