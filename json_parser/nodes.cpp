#include "json_parser/nodes.h"

#include <climits>
#include <cstring>
#include <utility>

namespace cloudagent {

OwnedJson new_node(int32_t kind) noexcept {
    OwnedJson node(static_cast<JsonNode *>(cJSON_malloc(sizeof(JsonNode))));
    if (node) {
        *node = JsonNode{};
        node->type = kind;
    }
    return node;
}

CJsonText copy_of(const char *text) noexcept {
    if (!text) {
        return nullptr;
    }
    const std::size_t size = std::strlen(text) + 1;
    CJsonText copy(static_cast<char *>(cJSON_malloc(size)));
    if (copy) {
        std::memcpy(copy.get(), text, size);
    }
    return copy;
}

OwnedJson new_string(const char *text) noexcept {
    CJsonText copy = copy_of(text);
    OwnedJson node = copy ? new_node(JSON_KIND_STRING) : nullptr;
    if (node) {
        node->valuestring = copy.release();
    }
    return node;
}

void set_number(JsonNode &node, double value) noexcept {
    node.type = JSON_KIND_NUMBER;
    node.valuedouble = value;
    if (value >= INT_MAX) {
        node.valueint = INT_MAX;
    } else if (value > INT_MIN) {
        node.valueint = static_cast<int32_t>(value);
    } else {
        node.valueint = value <= INT_MIN ? INT_MIN : 0;  // 0: not a number
    }
}

}  // namespace cloudagent

using namespace cloudagent;

void deleteJson(JsonNode *document) noexcept {
    while (document) {
        if (!(document->type & JSON_REFERENCE_FLAG)) {
            // Inserting the children before the next sibling turns any depth into one chain.
            if (JsonNode *last = document->child) {
                while (last->next) {
                    last = last->next;
                }
                last->next = document->next;
                document->next = document->child;
            }
            cJSON_free(document->valuestring);
        }
        cJSON_free(document->string);
        cJSON_free(std::exchange(document, document->next));
    }
}

namespace {

bool copy_text(char *&to, const char *from) noexcept {
    to = copy_of(from).release();
    return to != nullptr || from == nullptr;
}

OwnedJson duplicate(const JsonNode &node, bool recurse, int level) noexcept {
    OwnedJson copy = level < kDeepestLevel ? new_node(kind_of(node)) : nullptr;
    if (!copy || !copy_text(copy->valuestring, node.valuestring) ||
        !copy_text(copy->string, node.string)) {
        return nullptr;
    }
    copy->valueint = node.valueint;
    copy->valuedouble = node.valuedouble;
    ChildAppender children(*copy);
    for (const JsonNode *child = recurse ? node.child : nullptr; child; child = child->next) {
        OwnedJson child_copy = duplicate(*child, recurse, level + 1);
        if (!child_copy) {
            return nullptr;
        }
        children.append(child_copy.release());
    }
    return copy;
}

}  // namespace

JsonNode *duplicateJson(const JsonNode *node, int recurse) noexcept {
    return node ? duplicate(*node, recurse != 0, 0).release() : nullptr;
}
