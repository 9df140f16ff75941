// JSON: nothing partial is handed out; what cannot be added is left out and stays the caller's.
#include "json_document.h"
#include "json_parser/owned_json.h"
#include "support/owned.h"

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

// What makes a document out of nothing.
Operation maker(const char *function, std::function<void()> call, const std::string &text) {
    return {function,      "", Reach::kAlone, prepare_nothing, std::move(call), document_outcome,
            {text, "null"}};
}

namespace {

// What only looks at the document of kJsonText.
Operation reader(const char *function, std::function<void()> call,
                 std::function<std::string()> answer, const std::string &expected) {
    return {function,
            "",
            Reach::kAlone,
            prepare_text,
            std::move(call),
            [answer = std::move(answer)] {
                const std::string text = answer();
                release_documents();
                return text;
            },
            {expected}};
}

std::string number() { return std::to_string(g_number) + " " + std::to_string(g_found); }
std::string node() { return text_of(g_node); }
std::string text() { return g_text; }

Operations parse_rows() {
    return {
        maker(
            "parseJsonText", [] { g_document = parseJsonText(kJsonText); },
            R"({"name":"a\"b","list":[1,2.5,"c"],"in":{"on":true,"off":false,"none":null},)"
            R"("big":4294967295})"),
        maker(
            "parseJsonTextLongLongUint",
            [] {
                g_document = parseJsonTextLongLongUint(R"({"id":18446744073709551615,"l":[1]})");
            },
            R"({"id":18446744073709551615,"l":[1]})"),
        {"parseJsonText",
         "no JSON",
         Reach::kAlone,
         prepare_nothing,
         [] { g_document = parseJsonText(R"({"name":"a","list":[1,2,x]})"); },
         document_outcome,
         {"null"}},
        {"deleteJson",
         "",
         Reach::kAlone,
         prepare_text,
         [] {
             deleteJson(g_document);
             g_document = nullptr;
         },
         document_outcome,
         {"null"}},
    };
}

Operations read_rows() {
    return {
        reader(
            "getJsonObjectForKey", [] { g_node = getJsonObjectForKey(g_document, "IN"); }, node,
            R"({"on":true,"off":false,"none":null})"),
        reader(
            "getJsonType", [] { g_number = getJsonType(g_document); },
            [] { return std::to_string(g_number); }, "6"),
        reader(
            "getJsonArraySize", [] { g_number = getJsonArraySize(g_document); },
            [] { return std::to_string(g_number); }, "4"),
        reader(
            "getJsonArrayItem", [] { g_node = getJsonArrayItem(g_document, 3); }, node,
            "4294967295"),
        reader(
            "getJsonChild", [] { g_node = getJsonChild(g_document); }, node, R"("a\"b")"),
        reader(
            "getJsonNext", [] { g_node = getJsonNext(g_document->child); }, node, R"([1,2.5,"c"])"),
        reader(
            "getJsonStringValue", [] { g_text = getJsonStringValue(g_document->child); }, text,
            "a\"b"),
        reader(
            "getJsonIntValue", [] { g_number = getJsonIntValue(g_document->child->next->child); },
            [] { return std::to_string(g_number); }, "1"),
        reader(
            "getJsonDoubleValue",
            [] { g_double = getJsonDoubleValue(g_document->child->next->child->next); },
            [] { return std::to_string(g_double); }, "2.500000"),
        reader(
            "getJsonStringValueForKey",
            [] { g_text = getJsonStringValueForKey(g_document, "NAME"); }, text, "a\"b"),
        reader(
            "getJsonIntValueForKey",
            [] { g_number = getJsonIntValueForKey(g_document, "big", &g_found); }, number,
            "2147483647 1"),
        reader(
            "getJsonBoolValueForKey",
            [] {
                g_number =
                    getJsonBoolValueForKey(getJsonObjectForKey(g_document, "in"), "on", &g_found);
            },
            number, "1 1"),
        reader(
            "getJsonLongLongUintValueForKey",
            [] { g_big = getJsonLongLongUintValueForKey(g_document, "big", &g_found); },
            [] { return std::to_string(g_big) + " " + std::to_string(g_found) + output_text(); },
            "0 0\ngetJsonLongLongUintValueForKey IntValue of big not found\n"),
        reader(
            "getJsonDoubleValueForKey",
            [] { g_double = getJsonDoubleValueForKey(g_document, "big"); },
            [] { return std::to_string(g_double); }, "4294967295.000000"),
        reader(
            "compareJsonIntValueForKey",
            [] { g_number = compareJsonIntValueForKey(g_document, "big", g_document, "big"); },
            [] { return std::to_string(g_number); }, "0"),
        reader(
            "compareJsonBoolValueForKey",
            [] {
                const JsonNode *const in = getJsonObjectForKey(g_document, "in");
                g_number = compareJsonBoolValueForKey(in, "on", in, "off");
            },
            [] { return std::to_string(g_number); }, "1"),
    };
}

}  // namespace

Operations json_operations() {
    Operations rows;
    for (const Operations &more : {parse_rows(), read_rows(), json_build_operations()})
        rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}
