// cJSON prints a tree of its own items that borrow all texts, with every number as a raw item.
#include <cstdint>

#include "json_parser/nodes.h"

using namespace cloudagent;

namespace {

constexpr int kItemTypes[] = {cJSON_False, cJSON_True,   cJSON_NULL, cJSON_Raw, cJSON_String,
                              cJSON_Array, cJSON_Object, cJSON_Raw,  cJSON_Raw};

struct Extent {
    std::size_t items;
    std::size_t numbers;
};

// Counts the nodes of a tree; false when it is too deep.
bool measure(const JsonNode &node, int level, Extent &extent) noexcept {
    ++extent.items;
    extent.numbers += is_number_kind(kind_of(node)) ? 1 : 0;
    bool fits = level < kDeepestLevel;
    for (const JsonNode *child = node.child; child && fits; child = child->next) {
        fits = measure(*child, level + 1, extent);
    }
    return fits;
}

// The borrowed tree, in one block: all items, then the texts of the numbers.
class Mirror {
  public:
    explicit Mirror(const JsonNode &node) noexcept {
        Extent extent{};
        constexpr std::size_t kMost = SIZE_MAX / (sizeof(cJSON) + kNumberSpace);
        if (!measure(node, 0, extent) || extent.items > kMost) {
            return;
        }
        const std::size_t item_bytes = extent.items * sizeof(cJSON);
        block_.reset(static_cast<char *>(cJSON_malloc(item_bytes + extent.numbers * kNumberSpace)));
        if (block_) {
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): aligned, as malloc's
            next_item_ = reinterpret_cast<cJSON *>(block_.get());
            next_text_ = block_.get() + item_bytes;
            root_ = mirror(node);
        }
    }

    const cJSON *root() const noexcept { return root_; }

  private:
    cJSON *mirror(const JsonNode &node) noexcept {
        cJSON *const item = next_item_++;
        *item = cJSON{};
        const int kind = kind_of(node);
        item->type = kind <= JSON_KIND_UINT64 ? kItemTypes[kind] : cJSON_Invalid;
        item->string = node.string;
        item->valuestring = node.valuestring;
        if (is_number_kind(kind)) {
            item->valuestring = next_text_;
            next_text_ += print_number(node, next_text_) + 1;
        }
        cJSON **link = &item->child;
        for (const JsonNode *child = node.child; child; child = child->next) {
            *link = mirror(*child);
            link = &(*link)->next;
        }
        return item;
    }

    CJsonText block_;
    cJSON *next_item_ = nullptr;
    char *next_text_ = nullptr;
    cJSON *root_ = nullptr;
};

}  // namespace

char *printJson(const JsonNode *node) noexcept {
    return node ? cJSON_Print(Mirror(*node).root()) : nullptr;
}

char *printJsonUnformatted(const JsonNode *node) noexcept {
    return node ? cJSON_PrintUnformatted(Mirror(*node).root()) : nullptr;
}
