// Uses the library from C++: a document, a digest, and a transfer handle of the agent's own that
// pins its DNS server, which only the libcurl installed with the library can.
#include <cloudagent/json_parser/json_parser.h>
#include <cloudagent/state/digest.h>
#include <curl/curl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

int main() {
    JsonNode *const document = createJsonObject();
    addJsonStringToObject(document, "agent", "second");
    char *const text = printJsonUnformatted(document);
    const bool printed = text != nullptr && std::strcmp(text, "{\"agent\":\"second\"}") == 0;
    std::free(text);
    deleteJson(document);

    char signature[65] = "";
    hmac_sha256_hex("what do ya want for nothing?", "Jefe", signature, sizeof signature);
    const bool is_signed = std::strcmp(signature,
                                       "5bdcc146bf60754e6a042426089575c75a003f089d2739839"
                                       "dec58b964ec3843") == 0;

    CURL *const handle = curl_easy_init();
    const bool pinned = curl_easy_setopt(handle, CURLOPT_DNS_SERVERS, "127.0.0.1") == CURLE_OK;
    curl_easy_cleanup(handle);

    std::printf("document %d, signature %d, pinning %d\n", printed, is_signed, pinned);
    return printed && is_signed && pinned ? 0 : 1;
}
