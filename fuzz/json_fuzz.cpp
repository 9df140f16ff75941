// Any bytes as a JSON text, in both number modes: what parses also prints and copies, what is
// printed of whole numbers parses to the same tree, and a failure points into the text.
#include <cjson/cJSON.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"

namespace {

struct FreeText {
    void operator()(char *text) const { std::free(text); }
};
using Text = std::unique_ptr<char, FreeText>;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

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

// Whether every number is one that prints in full: an int, or an unsigned one.
bool whole_numbers(const JsonNode *node) {
    for (; node; node = node->next) {
        if ((node->type == JSON_KIND_NUMBER && node->valuedouble != node->valueint) ||
            !whole_numbers(node->child)) {
            return false;
        }
    }
    return true;
}

using Parse = JsonNode *(*)(const char *) noexcept;

void check(Parse parse, const std::string &text) {
    const OwnedJson document(parse(text.c_str()));
    if (!document) {
        const char *const position = cJSON_GetErrorPtr();
        require(position >= text.c_str() && position <= text.c_str() + std::strlen(text.c_str()));
        return;
    }
    const Text formatted(printJson(document.get()));
    const Text plain(printJsonUnformatted(document.get()));
    require(formatted && plain);
    if (whole_numbers(document.get())) {
        require(same_tree(document.get(), OwnedJson(parse(formatted.get())).get()));
        require(same_tree(document.get(), OwnedJson(parse(plain.get())).get()));
    }
    const OwnedJson copy(duplicateJson(document.get(), 1));
    require(copy != nullptr);
    if (parse == parseJsonText) {
        require(same_text(Text(printJson(copy.get())).get(), formatted.get()));
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
    const std::string text(reinterpret_cast<const char *>(data), size);
    check(parseJsonText, text);
    check(parseJsonTextLongLongUint, text);
    return 0;
}
