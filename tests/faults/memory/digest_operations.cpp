// Digests and helpers: they need memory for their log lines only.
#include <openssl/sha.h>

#include <cstring>

#include "operation.h"
#include "state/digest.h"
#include "testing/files.h"

namespace {

constexpr const char *kFile = "/tmp/torture.file";
constexpr const char *kJefe = "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843";
constexpr const char *kQuestion = "what do ya want for nothing?";

SHA256_CTX g_context;
unsigned char g_digest[32];
const char *g_found;

std::string hex() {
    std::string text;
    for (const unsigned char byte : g_digest)
        for (const int digit : {byte >> 4, byte & 15})
            text += "0123456789abcdef"[digit];
    return text;
}

void start() {
    hmac_sha256_init(&g_context, reinterpret_cast<const unsigned char *>("Jefe"), 4, 0);
}

void feed() { g_result = hmac_sha256_update(&g_context, kQuestion, std::strlen(kQuestion)); }

void finish() { hmac_sha256_final(&g_context, g_digest); }

void start_and_feed() {
    start();
    feed();
}

std::string finished() {
    finish();
    return result() + hex();
}

std::string fed_and_finished() {
    feed();
    return finished();
}

// The number in the nonce is the same again.
std::string nonce_outcome() {
    const std::string once = hex();
    g_result |= api_nonce_generate(7, g_digest);
    return result() + (once == hex() ? "the same" : "another");
}

void write_file() { world::write_file(kFile, "ten bytes!"); }

}  // namespace

Operations digest_operations() {
    const std::string signature = std::string("1, ") + kJefe;
    return {
        {"hmac_sha256_init", nothing, start, fed_and_finished, {signature}},
        {"hmac_sha256_update", start, feed, finished, {signature}},
        {"hmac_sha256_final", start_and_feed, finish, [] { return result() + hex(); }, {signature}},
        {"hmac_sha256_hex",
         nothing,
         CALL(hmac_sha256_hex(kQuestion, "Jefe", g_text, 65)),
         result_and_text,
         {std::string("0, ") + kJefe}},
        {"api_nonce_generate",
         [] { std::memset(g_digest, 0, sizeof g_digest); },
         CALL(api_nonce_generate(7, g_digest)),
         nonce_outcome,
         {"0, the same"}},
        {"str_case_search",
         nothing,
         [] { g_found = str_case_search("a content-length: 5", "Content-Length"); },
         [] { return std::string(g_found); },
         {"content-length: 5"}},
        {"api_file_exist", write_file, CALL(api_file_exist(kFile)), result, {"1, "}},
        {"api_file_touch",
         write_file,
         CALL(api_file_touch(kFile)),
         [] { return result() + content_of(kFile); },
         {"0, ''"}},
    };
}
