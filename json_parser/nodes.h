// What the files of this room share: making nodes, linking them, and the limits of a number.
#ifndef CLOUDAGENT_JSON_PARSER_NODES_H
#define CLOUDAGENT_JSON_PARSER_NODES_H

#include <cjson/cJSON.h>

#include <memory>

#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"

// Printing and duplicating recurse once a level; this many levels fit any stack in use.
constexpr int kDeepestLevel = 10000;

struct FreeFromCJson {
    void operator()(void *block) const noexcept { cJSON_free(block); }
};

// Memory and texts from cJSON's allocator.
using CJsonText = std::unique_ptr<char[], FreeFromCJson>;

inline int kind_of(const JsonNode &node) noexcept { return node.type & 0xff; }

// A new node, zero but for its kind; null without memory.
OwnedJson new_node(int32_t kind) noexcept;

// A new string with a copy of the text; null without memory or for a null text.
OwnedJson new_string(const char *text) noexcept;

// A copy of the text; null without memory or for a null text.
CJsonText copy_of(const char *text) noexcept;

// Adds a new node under the key and returns it; null, and the node is gone, when that cannot be.
JsonNode *add_new(JsonNode *object, const char *key, OwnedJson node) noexcept;

// Makes a node a number.
void set_number(JsonNode &node, double value) noexcept;

// Appends nodes to a parent's children without walking them all for each.
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

#endif
