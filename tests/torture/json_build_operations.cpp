// Building, printing and copying JSON.
#include "json_document.h"
#include "support/owned.h"

namespace {

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
             release_documents();
             return same ? "the same" : copy;
         },
         {"the same", "null"}},
    };
}

}  // namespace

Operations json_build_operations() {
    Operations rows = build_rows();
    const Operations composite = composite_rows();
    rows.insert(rows.end(), composite.begin(), composite.end());
    return rows;
}
