#include "cloud_http/local_service.h"

#include "cloud_http/curl_http.h"
#include "log/log.h"
#include "support/owned.h"

LocalPayload read_local_payload(const char *url, const char *member, int site) noexcept {
    LocalPayload payload;
    char *text = nullptr;
    http_get(url, &text);
    OwnedText reply(text);
    if (!reply) {
        return payload;
    }
    payload.document.reset(parseJsonText(reply.get()));
    reply.reset();
    if (!payload.document) {
        return payload;
    }
    JsonNode *const envelope = getJsonObjectForKey(payload.document.get(), "restful_res");
    if (envelope == nullptr) {
        cloud_log("\n%d : restful_res not exist\n\n", site);
        return payload;
    }
    payload.object = getJsonObjectForKey(envelope, member);
    return payload;
}
