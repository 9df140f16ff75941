// HMAC over SHA-256 and SHA-224, and the signer of texts.
#include <gmock/gmock.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <random>
#include <vector>

#include "digest_text.h"
#include "state/digest.h"
#include "testing/calls.h"
#include "testing/guarded.h"

namespace {

constexpr int kSha256 = 0;
constexpr int kSha224 = 1;

size_t digest_length(int sha224) { return sha224 != 0 ? 28 : 32; }

std::string hmac_of(const unsigned char *key, int32_t length, const std::string &message,
                    int sha224) {
    SHA256_CTX context;
    Guarded<32> digest;
    hmac_sha256_init(&context, key, length, sha224);
    EXPECT_EQ(hmac_sha256_update(&context, message.data(), message.size()), 1);
    hmac_sha256_final(&context, digest.bytes());
    EXPECT_TRUE(digest.untouched_from(digest_length(sha224)));
    return digest.first(digest_length(sha224));
}

std::string hmac_of(const std::string &key, const std::string &message, int sha224) {
    return hmac_of(bytes_of(key), static_cast<int32_t>(key.size()), message, sha224);
}

std::string openssl_hmac(const std::string &key, const std::string &message, int sha224) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    HMAC(sha224 != 0 ? EVP_sha224() : EVP_sha256(), key.data(), static_cast<int>(key.size()),
         bytes_of(message), message.size(), digest, &length);
    return {reinterpret_cast<char *>(digest), length};
}

std::string hash_of(const std::string &text, int sha224) {
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EVP_Digest(text.data(), text.size(), digest, &length, sha224 != 0 ? EVP_sha224() : EVP_sha256(),
               nullptr);
    return {reinterpret_cast<char *>(digest), length};
}

std::string counting(char from, char to) {
    std::string bytes;
    for (char byte = from; byte <= to; ++byte) {
        bytes += byte;
    }
    return bytes;
}

struct Vector {
    std::string key;
    std::string message;
    const char *sha224;  // may be cut short
    const char *sha256;
};

// The published cases 1 to 7 of RFC 4231, section 4.
const Vector kPublished[] = {
    {std::string(20, '\x0b'), "Hi There",
     "896fb1128abbdf196832107cd49df33f47b4b1169912ba4f53684b22",
     "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
    {"Jefe", "what do ya want for nothing?",
     "a30e01098bc6dbbf45690f3a7e9e6d0f8bbea2a39e6148008fd05e44",
     "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
    {std::string(20, '\xaa'), std::string(50, '\xdd'),
     "7fb3cb3588c6c1f6ffa9694d7d6ad2649365b0c1f65d69d1ec8333ea",
     "773ea91e36800e46854db8ebd09181a72959098b3ef8c122d9635514ced565fe"},
    {counting(1, 25), std::string(50, '\xcd'),
     "6c11506874013cac6a2abc1bb382627cec6a90d86efc012de7afec5a",
     "82558a389a443c0ea4cc819899f2083a85f0faa3e578f8077a2e3ff46729665b"},
    {std::string(20, '\x0c'), "Test With Truncation", "0e2aea68a90c8d37c988bcdb9fca6fa8",
     "a3b6167473100ee06e0c796c2955552b"},
    {std::string(131, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
     "95e9a0db962095adaebe9b2d6f0dbce2d499f112f2d2b7273fa6870e",
     "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"},
    {std::string(131, '\xaa'),
     "This is a test using a larger than block-size key and a larger than block-size data. The key "
     "needs to be hashed before being used by the HMAC algorithm.",
     "3a854166ac5d9f023f54d517d0b39dbd946770db9c2b95c9f6f565d1",
     "9b09ffa71b942fcb27635fbcd5b0e944bfdc63644f0713938a7f51535c3a35e2"},
};

TEST(Hmac, GivesThePublishedDigests) {
    for (const Vector &row : kPublished) {
        const std::string sha224 = as_hex(hmac_of(row.key, row.message, kSha224));
        const std::string sha256 = as_hex(hmac_of(row.key, row.message, kSha256));
        EXPECT_EQ(sha224.size(), 56u);
        EXPECT_EQ(sha256.size(), 64u);
        EXPECT_EQ(sha224.substr(0, std::string(row.sha224).size()), row.sha224);
        EXPECT_EQ(sha256.substr(0, std::string(row.sha256).size()), row.sha256);
    }
}

TEST(Hmac, NegativeKeyLengthHashesNoBytes) {
    const std::string key = "never read";
    for (const int sha224 : {kSha256, kSha224}) {
        const std::string expected = openssl_hmac(hash_of("", sha224), "m", sha224);
        for (const int32_t length : {-1, -64, -65, INT32_MIN}) {
            EXPECT_EQ(hmac_of(bytes_of(key), length, "m", sha224), expected);
            EXPECT_EQ(hmac_of(nullptr, length, "m", sha224), expected);
        }
    }
}

TEST(Hmac, AnyFlagButZeroIsSha224) {
    for (const int flag : {2, -1, 256}) {
        EXPECT_EQ(hmac_of("k", "m", flag), hmac_of("k", "m", kSha224));
    }
}

TEST(Hmac, TakesTheMessageInPieces) {
    SHA256_CTX context;
    unsigned char digest[32];
    hmac_sha256_init(&context, bytes_of("Jefe"), 4, kSha256);
    EXPECT_EQ(hmac_sha256_update(&context, "what do ya ", 11), 1);
    EXPECT_EQ(hmac_sha256_update(&context, "", 0), 1);
    EXPECT_EQ(hmac_sha256_update(&context, "want for nothing?", 17), 1);
    hmac_sha256_final(&context, digest);
    EXPECT_EQ(as_hex(digest, 32), kPublished[1].sha256);
}

TEST(Hmac, EqualsOpensslOnRandomInputsAndKeysAroundTheBlockSize) {
    for (const size_t length : {0u, 1u, 63u, 64u, 65u, 131u, 5000u}) {
        const std::string key(length, 'k');
        for (const int sha224 : {kSha256, kSha224}) {
            EXPECT_EQ(hmac_of(key, "message", sha224), openssl_hmac(key, "message", sha224));
        }
    }
    std::mt19937 random(4231);
    const auto random_text = [&](uint32_t most) {
        std::string text(random() % (most + 1), '\0');
        std::generate(text.begin(), text.end(), [&] { return static_cast<char>(random()); });
        return text;
    };
    for (int i = 0; i < 10000; ++i) {
        const std::string key = random_text(150);
        const std::string message = random_text(300);
        const int sha224 = i % 2;
        ASSERT_EQ(hmac_of(key, message, sha224), openssl_hmac(key, message, sha224)) << i;
    }
}

std::string pad_for(const std::string &key, unsigned char filler) {
    std::string pad(64, static_cast<char>(filler));
    for (size_t i = 0; i < key.size(); ++i) {
        pad[i] = static_cast<char>(pad[i] ^ key[i]);
    }
    return pad;
}

TEST(Hmac, LeavesItsPadsInView) {
    const std::string keys[] = {"", "k", std::string(64, 'k'), std::string(65, 'k')};
    for (const std::string &key : keys) {
        for (const int sha224 : {kSha256, kSha224}) {
            hmac_of(key, "m", sha224);
            const std::string used = key.size() > 64 ? hash_of(key, sha224) : key;
            EXPECT_EQ(as_hex(hmac_ipad, 64), as_hex(pad_for(used, 0x36)));
            EXPECT_EQ(as_hex(hmac_opad, 64), as_hex(pad_for(used, 0x5C)));
        }
    }
}

// The finish reads the outer pad that the start has filled.
TEST(Hmac, FinishReadsTheOuterPad) {
    SHA256_CTX context;
    unsigned char digest[32];
    hmac_sha256_init(&context, bytes_of("k"), 1, kSha256);
    hmac_sha256_update(&context, "m", 1);
    std::fill(std::begin(hmac_opad), std::end(hmac_opad), static_cast<unsigned char>('o'));
    hmac_sha256_final(&context, digest);
    const std::string inner = hash_of(pad_for("k", 0x36) + "m", kSha256);
    EXPECT_EQ(as_hex(digest, 32), as_hex(hash_of(std::string(64, 'o') + inner, kSha256)));
}

std::string sign(const char *message, const char *key) {
    Guarded<65> out;
    EXPECT_EQ(hmac_sha256_hex(message, key, out.data(), 65), 0);
    EXPECT_EQ(out.data()[64], '\0');
    EXPECT_TRUE(out.untouched_from(65));
    return out.first(64);
}

TEST(Signer, TakesTheMessageFirstAndTheKeySecond) {
    EXPECT_EQ(sign("what do ya want for nothing?", "Jefe"), kPublished[1].sha256);
    EXPECT_NE(sign("Jefe", "what do ya want for nothing?"), kPublished[1].sha256);
}

TEST(Signer, EqualsTheHmacForKeysAroundTheBlockSize) {
    for (const size_t length : {0u, 1u, 63u, 64u, 65u, 131u}) {
        const std::string key(length, 'k');
        EXPECT_EQ(sign("message", key.c_str()), as_hex(openssl_hmac(key, "message", kSha256)));
    }
}

TEST(Signer, WritesNoMoreThanItsBufferTakes) {
    for (size_t size = 0; size <= 80; ++size) {
        Guarded<80> out;
        EXPECT_EQ(hmac_sha256_hex("what do ya want for nothing?", "Jefe", out.data(), size), 0);
        const size_t digits = size == 0 ? 0 : std::min(size - 1, size_t{64});
        EXPECT_EQ(out.first(digits), std::string(kPublished[1].sha256).substr(0, digits));
        EXPECT_TRUE(out.untouched_from(std::min(size, size_t{65}))) << size;
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
