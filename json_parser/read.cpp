#include <cstdio>

#include "json_parser/nodes.h"

using namespace cloudagent;

namespace {

char lower(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool same_name(const char *a, const char *b) noexcept {
    while (*a != '\0' && lower(*a) == lower(*b)) {
        ++a;
        ++b;
    }
    return lower(*a) == lower(*b);
}

// The member if it is of that kind, else null. Sets *found to 1 or 0.
const JsonNode *find_kind(const JsonNode *object, const char *key, int kind, int *found) noexcept {
    const JsonNode *node = getJsonObjectForKey(object, key);
    if (node && kind_of(*node) != kind) {
        node = nullptr;
    }
    if (found) {
        *found = node ? 1 : 0;
    }
    return node;
}

}  // namespace

JsonNode *getJsonObjectForKey(const JsonNode *object, const char *key) noexcept {
    JsonNode *node = key ? getJsonChild(object) : nullptr;
    while (node && !(node->string && same_name(node->string, key))) {
        node = node->next;
    }
    return node;
}

int getJsonType(const JsonNode *node) noexcept { return node ? kind_of(*node) : 0; }

int getJsonArraySize(const JsonNode *array) noexcept {
    int size = 0;
    for (const JsonNode *node = getJsonChild(array); node; node = node->next) {
        ++size;
    }
    return size;
}

JsonNode *getJsonArrayItem(const JsonNode *array, int index) noexcept {
    JsonNode *node = getJsonChild(array);
    for (; node && index > 0; --index) {
        node = node->next;
    }
    return node;
}

JsonNode *getJsonChild(const JsonNode *node) noexcept { return node ? node->child : nullptr; }
JsonNode *getJsonNext(const JsonNode *node) noexcept { return node ? node->next : nullptr; }

char *getJsonStringValue(const JsonNode *node) noexcept {
    return node ? node->valuestring : nullptr;
}

int getJsonIntValue(const JsonNode *node) noexcept { return node ? node->valueint : 0; }
double getJsonDoubleValue(const JsonNode *node) noexcept { return node ? node->valuedouble : 0.0; }

char *getJsonStringValueForKey(const JsonNode *object, const char *key) noexcept {
    return getJsonStringValue(find_kind(object, key, JSON_KIND_STRING, nullptr));
}

int getJsonIntValueForKey(const JsonNode *object, const char *key, int *found) noexcept {
    return getJsonIntValue(find_kind(object, key, JSON_KIND_NUMBER, found));
}

int getJsonBoolValueForKey(const JsonNode *object, const char *key, int *found) noexcept {
    const bool is_true = find_kind(object, key, JSON_KIND_TRUE, found) != nullptr;
    if (!is_true) {
        find_kind(object, key, JSON_KIND_FALSE, found);
    }
    return is_true ? 1 : 0;
}

uint64_t getJsonLongLongUintValueForKey(const JsonNode *object, const char *key,
                                        int *found) noexcept {
    const JsonNode *node = find_kind(object, key, JSON_KIND_UINT64, found);
    if (!node) {
        std::printf("\ngetJsonLongLongUintValueForKey IntValue of %s not found\n",
                    key ? key : "(null)");
        return 0;
    }
    return node->valueulonglong;
}

double getJsonDoubleValueForKey(const JsonNode *object, const char *key) noexcept {
    return getJsonDoubleValue(getJsonObjectForKey(object, key));
}
