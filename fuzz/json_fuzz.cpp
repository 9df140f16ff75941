// Any bytes as a JSON text, in both number modes: every document prints and copies; printed whole
// numbers parse to the same tree; an error position lies in the text.
#include <cjson/cJSON.h>

#include <cstring>

#include "fuzz.h"
#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"

using cloudagent::OwnedJson;

namespace {

struct FreeText {
    void operator()(char *text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

bool same_text(const char *a, const char *b) { return a && b ? std::strcmp(a, b) == 0 : a == b; }

bool same_tree(const JsonNode *a, const JsonNode *b) {
    for (; a && b; a = a->next, b = b->next) {
        if (a->type != b->type || a->valueint != b->valueint || a->valuedouble != b->valuedouble ||
            a->valueulonglong != b->valueulonglong || !same_text(a->valuestring, b->valuestring) ||
            !same_text(a->string, b->string) || !same_tree(a->child, b->child)) {
            return false;
        }
    }
    return a == b;
}

// Whether every number prints in full: an int, or an unsigned one.
bool whole_numbers(const JsonNode *node) {
    for (; node; node = node->next) {
        if ((node->type == JSON_KIND_NUMBER && node->valuedouble != node->valueint) ||
            !whole_numbers(node->child)) {
            return false;
        }
    }
    return true;
}

// One string for each element or member, without quotes and backslashes.
void check_string_array(const JsonNode *document) {
    const OwnedJson object(createJsonObject());
    REQUIRE(addJsonStringArrayToObject(object.get(), "copy", document) == nullptr);
    const JsonNode *const strings = getJsonObjectForKey(object.get(), "COPY");
    REQUIRE(getJsonType(strings) == JSON_KIND_ARRAY);
    REQUIRE(getJsonArraySize(strings) == getJsonArraySize(document));
    for (const JsonNode *node = getJsonChild(strings); node; node = getJsonNext(node)) {
        REQUIRE(getJsonType(node) == JSON_KIND_STRING);
        REQUIRE(std::strpbrk(getJsonStringValue(node), "\"\\") == nullptr);
    }
}

using Parse = JsonNode *(*)(const char *) noexcept;

void check(Parse parse, std::string_view bytes) {
    const std::unique_ptr<char[]> text = fuzz::c_text(bytes);
    const OwnedJson document(parse(text.get()));
    if (!document) {
        const char *const position = cJSON_GetErrorPtr();
        REQUIRE(position >= text.get() && position <= text.get() + std::strlen(text.get()));
        return;
    }
    const Text formatted(printJson(document.get()));
    const Text plain(printJsonUnformatted(document.get()));
    REQUIRE(formatted && plain);
    if (whole_numbers(document.get())) {
        REQUIRE(same_tree(document.get(), OwnedJson(parse(formatted.get())).get()));
        REQUIRE(same_tree(document.get(), OwnedJson(parse(plain.get())).get()));
    }
    const OwnedJson copy(duplicateJson(document.get(), 1));
    REQUIRE(copy != nullptr);
    check_string_array(document.get());
    if (parse == parseJsonText) {
        REQUIRE(same_text(Text(printJson(copy.get())).get(), formatted.get()));
    }
}

void try_input(fuzz::Input input) {
    const std::string_view text = input.rest();
    check(parseJsonText, text);
    check(parseJsonTextLongLongUint, text);
}

}  // namespace

const fuzz::Target fuzz::target = {try_input};
