// JSON: nothing partial is handed out; what cannot be added is left out and stays the caller's.
#include "base/owned.h"
#include "json_document.h"
#include "json_parser/owned_json.h"

using cloudagent::OwnedText;

JsonNode *g_document;
JsonNode *g_other;
JsonNode *g_node;
char *g_text;

namespace {

int g_number;
int g_found;
double g_double;
uint64_t g_big;

}  // namespace

std::string text_of(const JsonNode *document) {
    const OwnedText text(printJsonUnformatted(document));
    return text ? text.get() : "null";
}

void release_documents() {
    deleteJson(g_document);
    deleteJson(g_other);
    g_document = g_other = g_node = nullptr;
}

std::string document_outcome() {
    const std::string text = text_of(g_document);
    release_documents();
    return text;
}

void prepare_object() { g_document = parseJsonText(R"({"a":1})"); }
void prepare_text() { g_document = parseJsonText(kJsonText); }
void prepare_nothing() { g_document = nullptr; }

Operation maker(const char *function, std::function<void()> call, const std::string &text) {
    return alone(function, prepare_nothing, std::move(call), document_outcome, {text, "null"});
}

namespace {

// A row whose function only reads the document of kJsonText.
Operation reader(const char *function, std::function<void()> call,
                 std::function<std::string()> answer, const std::string &expected) {
    return alone(function, prepare_text, std::move(call),
                 [answer = std::move(answer)] {
                     const std::string text = answer();
                     release_documents();
                     return text;
                 },
                 {expected});
}

std::string number() { return std::to_string(g_number) + " " + std::to_string(g_found); }
std::string node() { return text_of(g_node); }
std::string text() { return g_text; }

// Parts of the document of kJsonText.
JsonNode *in() { return getJsonObjectForKey(g_document, "in"); }
JsonNode *list() { return g_document->child->next->child; }

Operations parse_rows() {
    constexpr const char *kBig = R"({"id":18446744073709551615,"l":[1]})";
    return {
        MAKES(parseJsonText, (kJsonText), kJsonText),
        MAKES(parseJsonTextLongLongUint, (kBig), kBig),
        alone("parseJsonText, no JSON", prepare_nothing,
              [] { g_document = parseJsonText(R"({"name":"a","list":[1,2,x]})"); },
              document_outcome, {"null"}),
        alone("deleteJson", prepare_text,
              [] {
                  deleteJson(g_document);
                  g_document = nullptr;
              },
              document_outcome, {"null"}),
    };
}

// A row: the function's result is kept in a variable, and `answer` says it.
#define READS(variable, function, arguments, answer, expected) \
    reader(                                                    \
        #function, [] { variable = function arguments; }, answer, expected)

Operations read_rows() {
    const auto integer = [] { return std::to_string(g_number); };
    const auto real = [] { return std::to_string(g_double); };
    const auto big = [] {
        return std::to_string(g_big) + " " + std::to_string(g_found) + output_text();
    };
    return {
        READS(g_node, getJsonObjectForKey, (g_document, "IN"), node,
              R"({"on":true,"off":false,"none":null})"),
        READS(g_number, getJsonType, (g_document), integer, "6"),
        READS(g_number, getJsonArraySize, (g_document), integer, "4"),
        READS(g_node, getJsonArrayItem, (g_document, 3), node, "4294967295"),
        READS(g_node, getJsonChild, (g_document), node, R"("a\"b")"),
        READS(g_node, getJsonNext, (g_document->child), node, R"([1,2.5,"c"])"),
        READS(g_text, getJsonStringValue, (g_document->child), text, "a\"b"),
        READS(g_number, getJsonIntValue, (list()), integer, "1"),
        READS(g_double, getJsonDoubleValue, (list()->next), real, "2.500000"),
        READS(g_text, getJsonStringValueForKey, (g_document, "NAME"), text, "a\"b"),
        READS(g_number, getJsonIntValueForKey, (g_document, "big", &g_found), number,
              "2147483647 1"),
        READS(g_number, getJsonBoolValueForKey, (in(), "on", &g_found), number, "1 1"),
        READS(g_big, getJsonLongLongUintValueForKey, (g_document, "big", &g_found), big,
              "0 0\ngetJsonLongLongUintValueForKey IntValue of big not found\n"),
        READS(g_double, getJsonDoubleValueForKey, (g_document, "big"), real, "4294967295.000000"),
        READS(g_number, compareJsonIntValueForKey, (g_document, "big", g_document, "big"), integer,
              "0"),
        READS(g_number, compareJsonBoolValueForKey, (in(), "on", in(), "off"), integer, "1"),
    };
}

}  // namespace

Operations json_operations() {
    return joined({parse_rows(), read_rows(), json_build_operations()});
}
