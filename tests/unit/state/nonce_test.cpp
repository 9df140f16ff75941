#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <thread>

#include "digest_text.h"
#include "state/device_identity.h"
#include "state/digest.h"
#include "testing/guarded.h"

namespace {

class Nonce : public testing::Test {
  protected:
    ~Nonce() override { set_mac(""); }

    static void set_mac(const std::string &mac) {
        std::snprintf(sys_mac_addr, sizeof sys_mac_addr, "%s", mac.c_str());
    }

    static uint32_t product_with_thread(uint32_t seed) {
        return seed * static_cast<uint32_t>(syscall(SYS_gettid));
    }

    static std::string generate(uint32_t seed) {
        Guarded<16> digest;
        EXPECT_EQ(api_nonce_generate(seed, digest.bytes()), 0);
        EXPECT_TRUE(digest.untouched_from(16));
        return as_hex(digest.first(16));
    }

    // 16 bytes of MAC text, filled up with zeros, one zero, 47 random bytes; hashed.
    static std::string recompute(const std::string &mac, uint32_t seed) {
        std::string material = mac.substr(0, 16);
        material.resize(17, '\0');
        srandom(product_with_thread(seed));
        while (material.size() < 64) {
            material += static_cast<char>(random() & 0xFF);
        }
        unsigned char digest[EVP_MAX_MD_SIZE];
        unsigned length = 0;
        EVP_Digest(material.data(), material.size(), digest, &length, EVP_md5(), nullptr);
        return as_hex(digest, length);
    }
};

TEST_F(Nonce, HashesTheMacAndRandomBytes) {
    for (const char *mac : {"88:dc:96:01:02:03", "", "88:dc", "0123456789abcdef",
                            "0123456789abcdefghijklmnopqrstu"}) {
        set_mac(mac);
        for (const uint32_t seed : {0u, 1u, 20261116u, 0xFFFFFFFFu}) {
            EXPECT_EQ(generate(seed), recompute(mac, seed)) << mac << ' ' << seed;
        }
    }
}

TEST_F(Nonce, DependsOnMacAndSeedOnly) {
    set_mac("88:dc:96:01:02:03");
    const std::string first = generate(7);
    (void)random();
    EXPECT_EQ(generate(7), first);
    EXPECT_NE(generate(8), first);
    set_mac("88:dc:96:01:02:04");
    EXPECT_EQ(generate(7), first) << "the last character is beyond the sixteen";
    set_mac("88:dc:96:01:03:03");
    EXPECT_NE(generate(7), first);
}

TEST_F(Nonce, DiffersFromThreadToThread) {
    set_mac("88:dc:96:01:02:03");
    const std::string here = generate(7);
    std::thread([&] {
        const std::string there = generate(7);
        EXPECT_EQ(there, recompute("88:dc:96:01:02:03", 7));
        EXPECT_NE(there, here);
    }).join();
}

TEST_F(Nonce, ReseedsTheProcessAndDraws47Numbers) {
    srandom(product_with_thread(7));
    for (int i = 0; i < 47; ++i) {
        (void)random();
    }
    const long next = random();
    generate(7);
    EXPECT_EQ(random(), next);
}

}  // namespace
