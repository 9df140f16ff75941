// The JSON-RPC 2.0 envelope, and operations over two documents.
#undef NDEBUG  // <cassert> declares __assert_fail only without it
#include <cassert>

#include "json_parser/nodes.h"

using namespace cloudagent;

namespace {

// The node's printed text without quotes and backslashes.
CJsonText bare_text(const JsonNode *node) noexcept {
    CJsonText text(printJson(node));
    char *to = text.get();
    for (const char *from = to; from && *from != '\0'; ++from) {
        if (*from != '"' && *from != '\\') {
            *to++ = *from;
        }
    }
    if (to) {
        *to = '\0';
    }
    return text;
}

using MemberGetter = int (*)(const JsonNode *, const char *, int *) noexcept;

int compare(MemberGetter get, const JsonNode *object_a, const char *key_a, const JsonNode *object_b,
            const char *key_b) noexcept {
    int found_a = 0;
    int found_b = 0;
    const int a = get(object_a, key_a, &found_a);
    const int b = get(object_b, key_b, &found_b);
    if (found_a == 0 || found_b == 0) {
        return 2;
    }
    return a == b ? 0 : 1;
}

}  // namespace

JsonNode *initJsonRpcObject() noexcept {
    JsonNode *const root = createJsonObject();
    if (!root) {
        // Support knows the abort by this text.
        __assert_fail("((void *)0) != root", "json_parser.c", 387, "initJsonRpcObject");
    }
    addJsonStringToObject(root, "jsonrpc", "2.0");
    return root;
}

void copyJsonStringValueForKey(const JsonNode *source, JsonNode *destination,
                               const char *key) noexcept {
    addJsonStringToObject(destination, key, getJsonStringValueForKey(source, key));
}

JsonNode *addJsonStringArrayToObject(JsonNode *object, const char *key,
                                     const JsonNode *source) noexcept {
    JsonNode *const array = add_new(object, key, new_node(JSON_KIND_ARRAY));
    if (!source) {
        return createJsonArray();
    }
    if (array) {
        ChildAppender strings(*array);
        for (const JsonNode *node = source->child; node; node = node->next) {
            if (OwnedJson string = new_string(bare_text(node).get())) {
                strings.append(string.release());
            }
        }
    }
    return nullptr;
}

int compareJsonIntValueForKey(const JsonNode *object_a, const char *key_a, const JsonNode *object_b,
                              const char *key_b) noexcept {
    return compare(getJsonIntValueForKey, object_a, key_a, object_b, key_b);
}

int compareJsonBoolValueForKey(const JsonNode *object_a, const char *key_a,
                               const JsonNode *object_b, const char *key_b) noexcept {
    return compare(getJsonBoolValueForKey, object_a, key_a, object_b, key_b);
}
