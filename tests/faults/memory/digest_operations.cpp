// Digests and helpers: none of them needs memory but for its log line.
#include <openssl/sha.h>

#include <cstdio>
#include <cstring>

#include "operation.h"
#include "state/device_identity.h"
#include "state/digest.h"
#include "testing/files.h"

namespace {

constexpr const char *kFile = "/tmp/torture.file";
constexpr const char *kJefe = "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843";
constexpr const char *kQuestion = "what do ya want for nothing?";

int g_result;
SHA256_CTX g_context;
unsigned char g_digest[32];
char g_text[65];
const char *g_found;

std::string hex() {
    std::string text;
    for (const unsigned char byte : g_digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

void start() {
    hmac_sha256_init(&g_context, reinterpret_cast<const unsigned char *>("Jefe"), 4, 0);
}
void feed() { g_result = hmac_sha256_update(&g_context, kQuestion, std::strlen(kQuestion)); }
void finish() { hmac_sha256_final(&g_context, g_digest); }

std::string finished() {
    finish();
    return hex();
}

void write_file() { world::write_file(kFile, "ten bytes!"); }

}  // namespace

Operations digest_operations() {
    const auto nothing = [] {};
    return {
        alone("hmac_sha256_init", nothing, start,
              [] {
                  feed();
                  return finished();
              },
              {kJefe}),
        alone("hmac_sha256_update", start, feed,
              [] { return std::to_string(g_result) + " " + finished(); },
              {std::string("1 ") + kJefe}),
        alone("hmac_sha256_final",
              [] {
                  start();
                  feed();
              },
              finish, hex, {kJefe}),
        alone(
            "hmac_sha256_hex", nothing,
            [] { g_result = hmac_sha256_hex(kQuestion, "Jefe", g_text, sizeof g_text); },
            [] { return std::to_string(g_result) + " " + g_text; }, {std::string("0 ") + kJefe}),
        alone(
            "api_nonce_generate", [] { std::memset(g_digest, 0, sizeof g_digest); },
            [] { g_result = api_nonce_generate(7, g_digest); },
            [] {
                const std::string once = hex();
                g_result |= api_nonce_generate(7, g_digest);
                return std::to_string(g_result) + (once == hex() ? " the same" : " another");
            },
            {"0 the same"}),
        alone(
            "str_case_search", nothing,
            [] { g_found = str_case_search("a content-length: 5", "Content-Length"); },
            [] { return std::string(g_found); }, {"content-length: 5"}),
        alone(
            "api_file_exist", write_file, [] { g_result = api_file_exist(kFile); },
            [] { return std::to_string(g_result); }, {"1"}),
        alone(
            "api_file_touch", write_file, [] { g_result = api_file_touch(kFile); },
            [] { return std::to_string(g_result) + " " + content_of(kFile); }, {"0 ''"}),
    };
}
