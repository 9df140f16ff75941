// The documents that the rows over JSON work on.
#pragma once

#include "json_parser/json_parser.h"
#include "operation.h"

extern JsonNode *g_document;  // what the operation works on or hands out
extern JsonNode *g_other;     // a second one
extern JsonNode *g_node;      // a node that points into a document
extern char *g_text;

inline constexpr const char *kJsonText =
    R"({"name":"a\"b","list":[1,2.5,"c"],"in":{"on":true,"off":false,"none":null},"big":4294967295})";

std::string text_of(const JsonNode *document);

// Deletes both documents.
void release_documents();

std::string document_outcome();

void prepare_object();  // {"a":1}
void prepare_text();    // kJsonText
void prepare_nothing();

// A row whose function makes a document.
Operation maker(const char *function, std::function<void()> call, const std::string &text);

#define MAKES(function, arguments, text) \
    maker(                               \
        #function, [] { g_document = function arguments; }, text)

Operations json_build_operations();
