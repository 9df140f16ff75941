#include <utility>

#include "json_parser/nodes.h"

namespace cloudagent {
namespace {

bool can_add(const JsonNode *parent, const JsonNode *node) noexcept {
    return parent != nullptr && node != nullptr && parent != node;
}

bool add_named(JsonNode *object, const char *key, JsonNode *node) noexcept {
    CJsonText name = can_add(object, node) ? copy_of(key) : nullptr;
    if (!name) {
        return false;
    }
    cJSON_free(std::exchange(node->string, name.release()));
    ChildAppender(*object).append(node);
    return true;
}

OwnedJson new_number(double value) noexcept {
    OwnedJson node = new_node(JSON_KIND_NUMBER);
    if (node) {
        set_number(*node, value);
    }
    return node;
}

template <typename Value>
JsonNode *create_array(const Value *values, int count,
                       OwnedJson (*new_element)(Value) noexcept) noexcept {
    OwnedJson array = new_node(JSON_KIND_ARRAY);
    if (!array || (!values && count > 0)) {
        return nullptr;
    }
    ChildAppender elements(*array);
    for (int i = 0; i < count; ++i) {
        OwnedJson element = new_element(values[i]);
        if (!element) {
            return nullptr;
        }
        elements.append(element.release());
    }
    return array.release();
}

}  // namespace

JsonNode *add_new(JsonNode *object, const char *key, OwnedJson node) noexcept {
    return add_named(object, key, node.get()) ? node.release() : nullptr;
}

}  // namespace cloudagent

using namespace cloudagent;

JsonNode *createJsonObject() noexcept { return new_node(JSON_KIND_OBJECT).release(); }
JsonNode *createJsonArray() noexcept { return new_node(JSON_KIND_ARRAY).release(); }

void addJsonItemToObject(JsonNode *object, const char *key, JsonNode *node) noexcept {
    add_named(object, key, node);
}

void addJsonItemToArray(JsonNode *array, JsonNode *node) noexcept {
    if (can_add(array, node)) {
        ChildAppender(*array).append(node);
    }
}

void addJsonStringToObject(JsonNode *object, const char *key, const char *text) noexcept {
    add_new(object, key, new_string(text));
}

void addJsonIntToObject(JsonNode *object, const char *key, int32_t value) noexcept {
    add_new(object, key, new_number(value));
}

void addJsonDoubleToObject(JsonNode *object, const char *key, double value) noexcept {
    add_new(object, key, new_number(value));
}

void addJsonBoolToObject(JsonNode *object, const char *key, int value) noexcept {
    add_new(object, key, new_node(value != 0 ? JSON_KIND_TRUE : JSON_KIND_FALSE));
}

void addJsonUlongToObject(JsonNode *object, const char *key, uint32_t value) noexcept {
    OwnedJson node = new_node(JSON_KIND_UINT32);
    if (node) {
        node->valueint = static_cast<int32_t>(value);
    }
    add_new(object, key, std::move(node));
}

void addJsonLongLongUintToObject(JsonNode *object, const char *key, uint64_t value) noexcept {
    OwnedJson node = new_node(JSON_KIND_UINT64);
    if (node) {
        node->valueulonglong = value;
    }
    add_new(object, key, std::move(node));
}

JsonNode *createJsonIntArray(const int *values, int count) noexcept {
    return create_array<int>(values, count, [](int value) noexcept { return new_number(value); });
}

JsonNode *createJsonDoubleArray(const double *values, int count) noexcept {
    return create_array<double>(values, count, new_number);
}

JsonNode *createJsonStringArray(const char **texts, int count) noexcept {
    return create_array<const char *>(texts, count, new_string);
}
