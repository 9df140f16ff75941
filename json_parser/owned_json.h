// Owner of a parsed or built document.
#pragma once

#include <memory>

#include "json_parser/json_parser.h"

namespace cloudagent {

struct DeleteJson {
    void operator()(JsonNode *document) const noexcept { deleteJson(document); }
};

using OwnedJson = std::unique_ptr<JsonNode, DeleteJson>;

}  // namespace cloudagent
