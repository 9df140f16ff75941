// Internals of the module: nodes, and numbers as texts.
#pragma once

#include <cjson/cJSON.h>

#include <memory>

#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"

namespace cloudagent {

// Printing and duplicating recurse; this depth fits any stack in use.
constexpr int kDeepestLevel = 10000;

struct FreeFromCJson {
    void operator()(void *block) const noexcept { cJSON_free(block); }
};

// Memory and texts from cJSON's allocator.
using CJsonText = std::unique_ptr<char[], FreeFromCJson>;

inline int kind_of(const JsonNode &node) noexcept { return node.type & 0xff; }

// A new node, zero but for its kind; a new string node; a copy of a text. Null without memory or
// for a null text.
OwnedJson new_node(int32_t kind) noexcept;
OwnedJson new_string(const char *text) noexcept;
CJsonText copy_of(const char *text) noexcept;

// Adds a new node under the key and returns it; on failure deletes it and returns null.
JsonNode *add_new(JsonNode *object, const char *key, OwnedJson node) noexcept;

// Turns a node into a number.
void set_number(JsonNode &node, double value) noexcept;

// Appends children to a parent, keeping the end of its list.
class ChildAppender {
  public:
    explicit ChildAppender(JsonNode &parent) noexcept : parent_(parent), last_(parent.child) {
        while (last_ && last_->next) {
            last_ = last_->next;
        }
    }

    void append(JsonNode *node) noexcept {
        (last_ ? last_->next : parent_.child) = node;
        node->prev = last_;
        last_ = node;
    }

  private:
    JsonNode &parent_;
    JsonNode *last_;
};

// Whether numbers are read as JSON_KIND_NUMBER or as JSON_KIND_UINT64.
enum class NumberMode { kDouble, kUint64 };

// The next byte that begins a number ("-" or a digit outside strings), or the end of the text.
const char *find_number(const char *at) noexcept;

// The end of the number that begins there; begin itself for a "-" that the mode refuses.
const char *number_end(const char *begin, NumberMode mode) noexcept;

// Parses a number into a node. scratch has room for its text and a NUL.
void parse_number(JsonNode &node, const char *begin, NumberMode mode, char *scratch) noexcept;

// Bytes for the text of any number: 60 digits, a sign, a NUL and a few to spare.
constexpr std::size_t kNumberSpace = 64;

bool is_number_kind(int kind) noexcept;

// Prints a number to text, of kNumberSpace bytes, and returns its length.
std::size_t print_number(const JsonNode &node, char *text) noexcept;

}  // namespace cloudagent
