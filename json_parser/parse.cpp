// cJSON parses a copy of the text in which every number is a plain 0. The numbers are read here:
// cJSON has no exact 64-bit integers, accepts "1." and "-.5", and may cut a number after 63 bytes.
#include <cstddef>
#include <cstring>
#include <utility>

#include "json_parser/nodes.h"

using namespace cloudagent;

namespace {

constexpr char kSpoilt = '?';  // begins nothing in JSON, so cJSON stops there

constexpr int32_t kKinds[] = {JSON_KIND_FALSE,  JSON_KIND_TRUE,  JSON_KIND_NULL,  JSON_KIND_NUMBER,
                              JSON_KIND_STRING, JSON_KIND_ARRAY, JSON_KIND_OBJECT};

bool continues_number(char byte) noexcept {
    return byte != '\0' && std::strchr("+-.eE0123456789", byte) != nullptr;
}

bool is_blank(char byte) noexcept { return byte >= 1 && byte <= ' '; }

// Replaces every number of the copy by a 0, padded with blanks. Spoils a byte that only cJSON would
// read as part of a number, and a "-" that the mode refuses (as a whole uint64 document, "-" is 0).
void hide_numbers(const char *text, char *copy, NumberMode mode) noexcept {
    const char *top = text;
    while (is_blank(*top)) {
        ++top;
    }
    for (const char *at = find_number(text); *at != '\0'; at = find_number(at)) {
        const char *const end = number_end(at, mode);
        const bool is_number = end != at || (mode == NumberMode::kUint64 && at == top);
        copy[at - text] = is_number ? '0' : kSpoilt;
        for (++at; at < end; ++at) {
            copy[at - text] = ' ';
        }
        if (continues_number(*at)) {
            copy[at++ - text] = kSpoilt;
        }
    }
}

// Spoils every "\u" without four hexadecimal digits: cJSON reads it as a zero byte.
void spoil_bad_escapes(char *text) noexcept {
    while ((text = std::strchr(text, '\\')) != nullptr) {
        if (text[1] == 'u' && std::strspn(text + 2, "0123456789abcdefABCDEF") < 4) {
            text[1] = kSpoilt;
        }
        text += text[1] == '\0' ? 1 : 2;
    }
}

// The copy for cJSON. Spoils a byte-order mark, which cJSON would skip.
CJsonText copy_for_cjson(const char *text, NumberMode mode) noexcept {
    CJsonText copy = copy_of(text);
    if (copy) {
        hide_numbers(text, copy.get(), mode);
        spoil_bad_escapes(copy.get());
        if (std::strncmp(text, "\xEF\xBB\xBF", 3) == 0) {
            copy[0] = kSpoilt;
        }
    }
    return copy;
}

// Turns cJSON's tree into a document: moves its texts and reads the numbers in their order.
class Converter {
  public:
    Converter(const char *text, NumberMode mode, char *scratch) noexcept
        : cursor_(text), mode_(mode), scratch_(scratch) {}

    // Converts and frees items one by one, so that each node takes the memory of an item. Without
    // memory the rest stays in items.
    OwnedJson convert(cJSON *&items) noexcept {
        JsonNode parent{};
        ChildAppender nodes(parent);
        while (items) {
            JsonNode *const node = new_node(0).release();
            if (!node) {
                break;
            }
            nodes.append(node);
            fill(*node, *items);
            if (items->child) {
                break;
            }
            cJSON_free(std::exchange(items, items->next));
        }
        return OwnedJson(parent.child);
    }

  private:
    void fill(JsonNode &node, cJSON &item) noexcept {
        node.type = kKinds[__builtin_ctz(static_cast<unsigned>(item.type))];
        node.string = std::exchange(item.string, nullptr);
        node.valuestring = std::exchange(item.valuestring, nullptr);
        if (node.type == JSON_KIND_NUMBER) {
            const char *const begin = find_number(cursor_);
            parse_number(node, begin, mode_, scratch_);
            cursor_ = number_end(begin, mode_);
        } else {
            node.valueint = item.valueint;
            node.child = convert(item.child).release();
        }
    }

    const char *cursor_;
    NumberMode mode_;
    char *scratch_;
};

JsonNode *fail_at(const char *position) noexcept {
    cJSON_ParseWithLength(position, 0);  // fails and sets cJSON's error position
    return nullptr;
}

// Whether an empty object ends there, where a key was possible. Before a "}" that cJSON has passed
// stands the object's "{".
bool ends_empty_object(const char *end) noexcept {
    if (*--end != '}') {
        return false;
    }
    do {
        --end;
    } while (is_blank(*end));
    return *end == '{';
}

// The place of the error in the copy. cJSON points one byte too far if a byte stands in place of a
// key; then the place stays the same when that byte is spoilt and the rest is cut off.
std::ptrdiff_t offending_byte(char *copy) noexcept {
    const std::ptrdiff_t at = cJSON_GetErrorPtr() - copy;
    if (at == 0 || is_blank(copy[at - 1]) || copy[at - 1] == '"' || ends_empty_object(copy + at)) {
        return at;
    }
    copy[at - 1] = kSpoilt;
    copy[at] = '\0';
    cJSON_Delete(cJSON_Parse(copy));  // nothing
    return cJSON_GetErrorPtr() == copy + at ? at - 1 : at;
}

JsonNode *parse(const char *text, NumberMode mode) noexcept {
    if (!text) {
        return nullptr;
    }
    const CJsonText copy = copy_for_cjson(text, mode);
    if (!copy) {
        return fail_at(text);
    }
    cJSON *items = cJSON_Parse(copy.get());
    if (!items) {
        return fail_at(text + offending_byte(copy.get()));
    }
    OwnedJson document = Converter(text, mode, copy.get()).convert(items);
    if (items) {
        cJSON_Delete(items);
        return fail_at(text);
    }
    return document.release();
}

}  // namespace

JsonNode *parseJsonText(const char *text) noexcept { return parse(text, NumberMode::kDouble); }

JsonNode *parseJsonTextLongLongUint(const char *text) noexcept {
    return parse(text, NumberMode::kUint64);
}
