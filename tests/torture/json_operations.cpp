// JSON: nothing partial is handed out; what cannot be added is left out and stays the caller's.
#include <array>
#include <cstring>

#include "json_parser/json_parser.h"
#include "json_parser/owned_json.h"
#include "operation.h"
#include "support/owned.h"

namespace {

constexpr const char *kText =
    R"({"name":"a\"b","list":[1,2.5,"c"],"in":{"on":true,"off":false,"none":null},"big":4294967295})";

JsonNode *g_document;  // what the operation works on or hands out
JsonNode *g_other;     // a second one
JsonNode *g_node;      // a node that points into a document
char *g_text;
int g_number;
int g_found;
double g_double;
uint64_t g_big;

std::string text_of(const JsonNode *document) {
    const OwnedText text(printJsonUnformatted(document));
    return text ? text.get() : "null";
}

void release() {
    deleteJson(g_document);
    deleteJson(g_other);
    g_document = g_other = g_node = nullptr;
}

std::string document_outcome() {
    const std::string text = text_of(g_document);
    release();
    return text;
}

void prepare_object() { g_document = parseJsonText(R"({"a":1})"); }
void prepare_text() { g_document = parseJsonText(kText); }
void prepare_nothing() { g_document = nullptr; }

// What adds a member to {"a":1}.
Operation adder(const char *function, std::function<void()> call, const char *member) {
    return {function,
            "",
            Reach::kAlone,
            prepare_object,
            std::move(call),
            document_outcome,
            {std::string(R"({"a":1,)") + member + "}", R"({"a":1})"}};
}

// What makes a document out of nothing.
Operation maker(const char *function, std::function<void()> call, const std::string &text) {
    return {function,      "", Reach::kAlone, prepare_nothing, std::move(call), document_outcome,
            {text, "null"}};
}

// What only looks at the document of kText.
Operation reader(const char *function, std::function<void()> call,
                 std::function<std::string()> answer, const std::string &expected) {
    return {function,
            "",
            Reach::kAlone,
            prepare_text,
            std::move(call),
            [answer = std::move(answer)] {
                const std::string text = answer();
                release();
                return text;
            },
            {expected}};
}

// A node that could not be added still belongs to its maker.
std::string node_outcome() {
    const bool added = getJsonArraySize(g_document) == 2;
    if (!added)
        deleteJson(g_node);
    const std::string text = text_of(g_document);
    release();
    return text;
}

std::string number() { return std::to_string(g_number) + " " + std::to_string(g_found); }
std::string node() { return text_of(g_node); }
std::string text() { return g_text; }

std::string printed() {
    const OwnedText owned(g_text);
    release();
    return owned ? owned.get() : "null";
}

Operations parse_rows() {
    return {
        maker(
            "parseJsonText", [] { g_document = parseJsonText(kText); },
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

Operations build_rows() {
    static const int kInts[] = {1, 2, 3};
    static const double kDoubles[] = {0.5, 3.0};
    static const char *kTexts[] = {"a", "b"};
    return {
        maker(
            "createJsonObject", [] { g_document = createJsonObject(); }, "{}"),
        maker(
            "createJsonArray", [] { g_document = createJsonArray(); }, "[]"),
        maker(
            "createJsonIntArray", [] { g_document = createJsonIntArray(kInts, 3); }, "[1,2,3]"),
        maker(
            "createJsonDoubleArray", [] { g_document = createJsonDoubleArray(kDoubles, 2); },
            "[0.5,3]"),
        maker(
            "createJsonStringArray", [] { g_document = createJsonStringArray(kTexts, 2); },
            R"(["a","b"])"),
        adder(
            "addJsonStringToObject", [] { addJsonStringToObject(g_document, "b", "text"); },
            R"("b":"text")"),
        adder(
            "addJsonIntToObject", [] { addJsonIntToObject(g_document, "b", -5); }, R"("b":-5)"),
        adder(
            "addJsonUlongToObject", [] { addJsonUlongToObject(g_document, "b", 4294967295u); },
            R"("b":4294967295)"),
        adder(
            "addJsonBoolToObject", [] { addJsonBoolToObject(g_document, "b", 1); }, R"("b":true)"),
        adder(
            "addJsonDoubleToObject", [] { addJsonDoubleToObject(g_document, "b", 0.5); },
            R"("b":0.5)"),
        adder(
            "addJsonLongLongUintToObject",
            [] { addJsonLongLongUintToObject(g_document, "b", 18446744073709551615u); },
            R"("b":18446744073709551615)"),
        {"addJsonItemToObject",
         "",
         Reach::kAlone,
         [] {
             prepare_object();
             g_node = createJsonArray();
         },
         [] { addJsonItemToObject(g_document, "b", g_node); },
         node_outcome,
         {R"({"a":1,"b":[]})", R"({"a":1})"}},
        {"addJsonItemToArray",
         "",
         Reach::kAlone,
         [] {
             g_document = parseJsonText("[1]");
             g_node = createJsonArray();
         },
         [] { addJsonItemToArray(g_document, g_node); },
         node_outcome,
         {"[1,[]]"}},
    };
}

Operations composite_rows() {
    const auto prepare_two = [] {
        prepare_object();
        g_other = parseJsonText(R"({"s":"t","l":["x",2]})");
    };
    return {
        {"initJsonRpcObject",
         "",
         Reach::kAlone,
         prepare_nothing,
         [] { g_document = initJsonRpcObject(); },
         document_outcome,
         {R"({"jsonrpc":"2.0"})", "{}"},
         /*may_end_by_assertion=*/true},
        {"copyJsonStringValueForKey",
         "",
         Reach::kAlone,
         prepare_two,
         [] { copyJsonStringValueForKey(g_other, g_document, "s"); },
         document_outcome,
         {R"({"a":1,"s":"t"})", R"({"a":1})"}},
        {"addJsonStringArrayToObject",
         "",
         Reach::kAlone,
         prepare_two,
         [] { addJsonStringArrayToObject(g_document, "b", g_other->child->next); },
         document_outcome,
         {R"({"a":1,"b":["x","2"]})", R"({"a":1,"b":["x"]})", R"({"a":1,"b":["2"]})",
          R"({"a":1,"b":[]})", R"({"a":1})"}},
        {"addJsonStringArrayToObject",
         "no source",
         Reach::kAlone,
         prepare_object,
         [] { g_other = addJsonStringArrayToObject(g_document, "b", nullptr); },
         [] {
             const std::string other = text_of(g_other);
             return document_outcome() + " " + other;
         },
         {R"({"a":1,"b":[]} [])", R"({"a":1,"b":[]} null)", R"({"a":1} [])", R"({"a":1} null)"}},
        {"printJson",
         "",
         Reach::kAlone,
         prepare_object,
         [] { g_text = printJson(g_document); },
         printed,
         {"{\n\t\"a\":\t1\n}", "null"}},
        {"printJsonUnformatted",
         "",
         Reach::kAlone,
         prepare_text,
         [] { g_text = printJsonUnformatted(g_document); },
         printed,
         {R"({"name":"a\"b","list":[1,2.5,"c"],"in":{"on":true,"off":false,"none":null},)"
          R"("big":4294967295})",
          "null"}},
        {"duplicateJson",
         "",
         Reach::kAlone,
         prepare_text,
         [] { g_other = duplicateJson(g_document, 1); },
         [] {
             const std::string copy = text_of(g_other);
             const bool same = copy == text_of(g_document);
             release();
             return same ? "the same" : copy;
         },
         {"the same", "null"}},
    };
}

}  // namespace

Operations json_operations() {
    Operations rows;
    for (const Operations &more : {parse_rows(), read_rows(), build_rows(), composite_rows()})
        rows.insert(rows.end(), more.begin(), more.end());
    return rows;
}
