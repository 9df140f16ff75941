// JSON: nothing partial is handed out; an item that cannot be added is left out.
#include <utility>

#include "base/owned.h"
#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"
#include "operation.h"

using cloudagent::OwnedText;

namespace {

constexpr const char *kText =
    R"({"name":"a\"b","list":[1,2.5,"c"],"in":{"on":true,"off":false,"none":null},"big":4294967295})";

JsonNode *g_document;  // the operation works on it or hands it out
JsonNode *g_other;     // a second one
JsonNode *g_node;      // points into a document, or belongs to none
char *g_printed;
const char *g_word;
int g_found;
double g_double;
uint64_t g_big;

std::string text_of(const JsonNode *document) {
    const OwnedText text(printJsonUnformatted(document));
    return text ? text.get() : "null";
}

void prepare_object() { g_document = parseJsonText(R"({"a":1})"); }
void prepare_text() { g_document = parseJsonText(kText); }

// `text`, once the documents have been deleted.
std::string released(std::string text) {
    deleteJson(std::exchange(g_document, nullptr));
    deleteJson(std::exchange(g_other, nullptr));
    return text;
}

std::string document_outcome() { return released(text_of(g_document)); }

std::string both_outcome() {
    const std::string text = text_of(g_document);
    return released(text + " " + text_of(g_other));
}

std::string printed_outcome() {
    const OwnedText text(g_printed);
    return released(text ? text.get() : "null");
}

// ---- Makers of documents ----

Operation maker(const char *name, std::function<void()> call, const std::string &text) {
    return {name, nothing, std::move(call), document_outcome, {text, "null"}};
}

#define MAKES(function, arguments, text) \
    maker(                               \
        #function, [] { g_document = function arguments; }, text)

Operations maker_rows() {
    static const int kInts[] = {1, 2, 3};
    static const double kDoubles[] = {0.5, 3.0};
    static const char *kTexts[] = {"a", "b"};
    constexpr const char *kBig = R"({"id":18446744073709551615,"l":[1]})";
    return {
        MAKES(parseJsonText, (kText), kText),
        MAKES(parseJsonTextLongLongUint, (kBig), kBig),
        {"parseJsonText, no JSON",
         nothing,
         [] { g_document = parseJsonText(R"({"name":"a","list":[1,2,x]})"); },
         document_outcome,
         {"null"}},
        {"deleteJson",
         prepare_text,
         [] { deleteJson(std::exchange(g_document, nullptr)); },
         document_outcome,
         {"null"}},
        MAKES(createJsonObject, (), "{}"),
        MAKES(createJsonArray, (), "[]"),
        MAKES(createJsonIntArray, (kInts, 3), "[1,2,3]"),
        MAKES(createJsonDoubleArray, (kDoubles, 2), "[0.5,3]"),
        MAKES(createJsonStringArray, (kTexts, 2), R"(["a","b"])"),
        {"initJsonRpcObject",
         nothing,
         [] { g_document = initJsonRpcObject(); },
         document_outcome,
         {R"({"jsonrpc":"2.0"})", "{}"},
         Reach::kAlone,
         {},
         /*may_abort=*/true},
    };
}

// ---- Readers of the document of kText ----

Operation reader(const char *name, std::function<void()> call, std::function<std::string()> words,
                 const std::string &expected) {
    return {name,
            prepare_text,
            std::move(call),
            [words = std::move(words)] { return released(words()); },
            {expected}};
}

// The function's result is kept in a variable, and `words` tell it.
#define READS(variable, function, arguments, words, expected) \
    reader(                                                   \
        #function, [] { variable = function arguments; }, words, expected)

JsonNode *in() { return getJsonObjectForKey(g_document, "in"); }
JsonNode *list() { return g_document->child->next->child; }

Operations reader_rows() {
    const auto number = [] { return std::to_string(g_result); };
    const auto found = [] { return result() + std::to_string(g_found); };
    const auto real = [] { return std::to_string(g_double); };
    const auto big = [] {
        return std::to_string(g_big) + " " + std::to_string(g_found) + output_text();
    };
    const auto node = [] { return text_of(g_node); };
    const auto word = [] { return std::string(g_word); };
    return {
        READS(g_node, getJsonObjectForKey, (g_document, "IN"), node,
              R"({"on":true,"off":false,"none":null})"),
        READS(g_result, getJsonType, (g_document), number, "6"),
        READS(g_result, getJsonArraySize, (g_document), number, "4"),
        READS(g_node, getJsonArrayItem, (g_document, 3), node, "4294967295"),
        READS(g_node, getJsonChild, (g_document), node, R"("a\"b")"),
        READS(g_node, getJsonNext, (g_document->child), node, R"([1,2.5,"c"])"),
        READS(g_word, getJsonStringValue, (g_document->child), word, "a\"b"),
        READS(g_result, getJsonIntValue, (list()), number, "1"),
        READS(g_double, getJsonDoubleValue, (list()->next), real, "2.500000"),
        READS(g_word, getJsonStringValueForKey, (g_document, "NAME"), word, "a\"b"),
        READS(g_result, getJsonIntValueForKey, (g_document, "big", &g_found), found,
              "2147483647, 1"),
        READS(g_result, getJsonBoolValueForKey, (in(), "on", &g_found), found, "1, 1"),
        READS(g_big, getJsonLongLongUintValueForKey, (g_document, "big", &g_found), big,
              "0 0\ngetJsonLongLongUintValueForKey IntValue of big not found\n"),
        READS(g_double, getJsonDoubleValueForKey, (g_document, "big"), real, "4294967295.000000"),
        READS(g_result, compareJsonIntValueForKey, (g_document, "big", g_document, "big"), number,
              "0"),
        READS(g_result, compareJsonBoolValueForKey, (in(), "on", in(), "off"), number, "1"),
    };
}

// ---- Functions that add to {"a":1} ----

Operation adder(const char *name, std::function<void()> call, const char *member) {
    return {name,
            prepare_object,
            std::move(call),
            document_outcome,
            {std::string(R"({"a":1,)") + member + "}", R"({"a":1})"}};
}

#define ADDS(function, value, member) \
    adder(                            \
        #function, [] { function(g_document, "b", value); }, member)

// An item that could not be added still belongs to its maker.
std::string item_outcome() {
    if (getJsonArraySize(g_document) != 2)
        deleteJson(g_node);
    return document_outcome();
}

Operations adder_rows() {
    const auto prepare_source = [] {
        prepare_object();
        g_other = parseJsonText(R"({"s":"t","l":["x",2]})");
    };
    const auto prepare_item = [](const char *text) {
        return [=] {
            g_document = parseJsonText(text);
            g_node = createJsonArray();
        };
    };
    return {
        ADDS(addJsonStringToObject, "text", R"("b":"text")"),
        ADDS(addJsonIntToObject, -5, R"("b":-5)"),
        ADDS(addJsonUlongToObject, 4294967295u, R"("b":4294967295)"),
        ADDS(addJsonBoolToObject, 1, R"("b":true)"),
        ADDS(addJsonDoubleToObject, 0.5, R"("b":0.5)"),
        ADDS(addJsonLongLongUintToObject, 18446744073709551615u, R"("b":18446744073709551615)"),
        {"addJsonItemToObject",
         prepare_item(R"({"a":1})"),
         [] { addJsonItemToObject(g_document, "b", g_node); },
         item_outcome,
         {R"({"a":1,"b":[]})", R"({"a":1})"}},
        {"addJsonItemToArray",
         prepare_item("[1]"),
         [] { addJsonItemToArray(g_document, g_node); },
         item_outcome,
         {"[1,[]]"}},
        {"copyJsonStringValueForKey",
         prepare_source,
         [] { copyJsonStringValueForKey(g_other, g_document, "s"); },
         document_outcome,
         {R"({"a":1,"s":"t"})", R"({"a":1})"}},
        {"addJsonStringArrayToObject",
         prepare_source,
         [] { addJsonStringArrayToObject(g_document, "b", g_other->child->next); },
         document_outcome,
         {R"({"a":1,"b":["x","2"]})", R"({"a":1,"b":["x"]})", R"({"a":1,"b":["2"]})",
          R"({"a":1,"b":[]})", R"({"a":1})"}},
        {"addJsonStringArrayToObject, no source",
         prepare_object,
         [] { g_other = addJsonStringArrayToObject(g_document, "b", nullptr); },
         both_outcome,
         {R"({"a":1,"b":[]} [])", R"({"a":1,"b":[]} null)", R"({"a":1} [])", R"({"a":1} null)"}},
        {"printJson",
         prepare_object,
         [] { g_printed = printJson(g_document); },
         printed_outcome,
         {"{\n\t\"a\":\t1\n}", "null"}},
        {"printJsonUnformatted",
         prepare_text,
         [] { g_printed = printJsonUnformatted(g_document); },
         printed_outcome,
         {kText, "null"}},
        {"duplicateJson",
         prepare_text,
         [] { g_other = duplicateJson(g_document, 1); },
         both_outcome,
         {std::string(kText) + " " + kText, std::string(kText) + " null"}},
    };
}

}  // namespace

Operations json_operations() { return joined({maker_rows(), reader_rows(), adder_rows()}); }
