#include "cloud_http/local_service.h"

#include "base/owned.h"
#include "cloud_http/curl_http.h"
#include "log/log.h"

namespace cloudagent {

LocalPayload read_local_payload(const char *url, const char *member, int id) noexcept {
    LocalPayload payload;
    char *text = nullptr;
    http_get(url, &text);
    payload.document.reset(parseJsonText(OwnedText(text).get()));
    JsonNode *const envelope = getJsonObjectForKey(payload.document.get(), "restful_res");
    if (payload.document && envelope == nullptr) {
        cloud_log("\n%d : restful_res not exist\n\n", id);
    }
    payload.object = getJsonObjectForKey(envelope, member);
    return payload;
}

}  // namespace cloudagent
