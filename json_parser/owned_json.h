// Owner of a parsed or built document.
#ifndef CLOUDAGENT_JSON_PARSER_OWNED_JSON_H
#define CLOUDAGENT_JSON_PARSER_OWNED_JSON_H

#include <memory>

#include "json_parser/json_parser.h"

struct DeleteJson {
    void operator()(JsonNode *document) const noexcept { deleteJson(document); }
};

using OwnedJson = std::unique_ptr<JsonNode, DeleteJson>;

#endif
