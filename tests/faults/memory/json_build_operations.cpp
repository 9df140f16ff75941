// Building, printing and copying JSON.
#include "base/owned.h"
#include "json_document.h"

using cloudagent::OwnedText;

namespace {

// A row whose function adds a member to {"a":1}.
Operation adder(const char *function, std::function<void()> call, const char *member) {
    return alone(function, prepare_object, std::move(call), document_outcome,
                 {std::string(R"({"a":1,)") + member + "}", R"({"a":1})"});
}

#define ADDS(function, value, member) \
    adder(                            \
        #function, [] { function(g_document, "b", value); }, member)

// A node that could not be added still belongs to its maker.
std::string node_outcome() {
    const bool added = getJsonArraySize(g_document) == 2;
    if (!added)
        deleteJson(g_node);
    const std::string text = text_of(g_document);
    release_documents();
    return text;
}

std::string printed() {
    const OwnedText owned(g_text);
    release_documents();
    return owned ? owned.get() : "null";
}

Operations build_rows() {
    static const int kInts[] = {1, 2, 3};
    static const double kDoubles[] = {0.5, 3.0};
    static const char *kTexts[] = {"a", "b"};
    return {
        MAKES(createJsonObject, (), "{}"),
        MAKES(createJsonArray, (), "[]"),
        MAKES(createJsonIntArray, (kInts, 3), "[1,2,3]"),
        MAKES(createJsonDoubleArray, (kDoubles, 2), "[0.5,3]"),
        MAKES(createJsonStringArray, (kTexts, 2), R"(["a","b"])"),
        ADDS(addJsonStringToObject, "text", R"("b":"text")"),
        ADDS(addJsonIntToObject, -5, R"("b":-5)"),
        ADDS(addJsonUlongToObject, 4294967295u, R"("b":4294967295)"),
        ADDS(addJsonBoolToObject, 1, R"("b":true)"),
        ADDS(addJsonDoubleToObject, 0.5, R"("b":0.5)"),
        ADDS(addJsonLongLongUintToObject, 18446744073709551615u, R"("b":18446744073709551615)"),
        alone(
            "addJsonItemToObject",
            [] {
                prepare_object();
                g_node = createJsonArray();
            },
            [] { addJsonItemToObject(g_document, "b", g_node); }, node_outcome,
            {R"({"a":1,"b":[]})", R"({"a":1})"}),
        alone(
            "addJsonItemToArray",
            [] {
                g_document = parseJsonText("[1]");
                g_node = createJsonArray();
            },
            [] { addJsonItemToArray(g_document, g_node); }, node_outcome, {"[1,[]]"}),
    };
}

Operations composite_rows() {
    const auto prepare_two = [] {
        prepare_object();
        g_other = parseJsonText(R"({"s":"t","l":["x",2]})");
    };
    return {
        alone(
            "initJsonRpcObject", prepare_nothing, [] { g_document = initJsonRpcObject(); },
            document_outcome, {R"({"jsonrpc":"2.0"})", "{}"},
            /*may_end_by_assertion=*/true),
        alone("copyJsonStringValueForKey", prepare_two,
              [] { copyJsonStringValueForKey(g_other, g_document, "s"); }, document_outcome,
              {R"({"a":1,"s":"t"})", R"({"a":1})"}),
        alone("addJsonStringArrayToObject", prepare_two,
              [] { addJsonStringArrayToObject(g_document, "b", g_other->child->next); },
              document_outcome,
              {R"({"a":1,"b":["x","2"]})", R"({"a":1,"b":["x"]})", R"({"a":1,"b":["2"]})",
               R"({"a":1,"b":[]})", R"({"a":1})"}),
        alone(
            "addJsonStringArrayToObject, no source", prepare_object,
            [] { g_other = addJsonStringArrayToObject(g_document, "b", nullptr); },
            [] {
                const std::string other = text_of(g_other);
                return document_outcome() + " " + other;
            },
            {R"({"a":1,"b":[]} [])", R"({"a":1,"b":[]} null)", R"({"a":1} [])", R"({"a":1} null)"}),
        alone("printJson", prepare_object, [] { g_text = printJson(g_document); }, printed,
              {"{\n\t\"a\":\t1\n}", "null"}),
        alone("printJsonUnformatted", prepare_text,
              [] { g_text = printJsonUnformatted(g_document); }, printed,
              {R"({"name":"a\"b","list":[1,2.5,"c"],"in":{"on":true,"off":false,"none":null},)"
               R"("big":4294967295})",
               "null"}),
        alone(
            "duplicateJson", prepare_text, [] { g_other = duplicateJson(g_document, 1); },
            [] {
                const std::string copy = text_of(g_other);
                const bool same = copy == text_of(g_document);
                release_documents();
                return same ? "the same" : copy;
            },
            {"the same", "null"}),
    };
}

}  // namespace

Operations json_build_operations() { return joined({build_rows(), composite_rows()}); }
