// The JSON-RPC envelope and the operations over two documents.
#include <cstring>

#include "json_test.h"

namespace {

TEST(Rpc, StartsWithTheVersion) {
    const OwnedJson root(initJsonRpcObject());
    EXPECT_EQ(plain(root), R"({"jsonrpc":"2.0"})");
    EXPECT_EQ(member(root, "jsonrpc")->type, JSON_KIND_STRING);
}

TEST(RpcDeathTest, EndsTheProcessWithoutMemory) {
    const auto start_without_memory = [] {
        const MemoryWatch watch(1);
        initJsonRpcObject();
    };
    EXPECT_EXIT(start_without_memory(), testing::KilledBySignal(SIGABRT),
                "json_parser\\.c:387: initJsonRpcObject: Assertion `\\(\\(void \\*\\)0\\) != root' "
                "failed\\.");
}

TEST(Rpc, LeavesTheVersionOutWithoutMemoryForIt) {
    for (const std::size_t failing : {2u, 3u, 4u}) {
        const MemoryWatch watch(failing);
        OwnedJson root(initJsonRpcObject());
        EXPECT_EQ(root->child, nullptr) << failing;
        root.reset();
        EXPECT_EQ(memory_live(), 0u) << failing;
    }
}

TEST(CopyString, CopiesUnderTheGivenKey) {
    const OwnedJson source = parsed(R"({"Token":"abc","other":"x"})");
    OwnedJson destination = parsed(R"({"first":1})");
    copyJsonStringValueForKey(source.get(), destination.get(), "token");
    EXPECT_EQ(plain(destination), R"({"first":1,"token":"abc"})");
    EXPECT_NE(member(destination, "token")->valuestring, member(source, "token")->valuestring);
}

TEST(CopyString, AddsNothingWithoutAString) {
    const OwnedJson source = parsed(R"({"number":1,"none":null,"text":"x"})");
    member(source, "number")->valuestring = strdup("stray");
    OwnedJson destination(createJsonObject());
    for (const char *key : {"missing", "number", "none"}) {
        copyJsonStringValueForKey(source.get(), destination.get(), key);
    }
    copyJsonStringValueForKey(source.get(), destination.get(), nullptr);
    copyJsonStringValueForKey(nullptr, destination.get(), "text");
    copyJsonStringValueForKey(source.get(), nullptr, "text");
    EXPECT_EQ(plain(destination), "{}");
}

std::string string_array(const std::string &source) {
    OwnedJson object = parsed(R"({"first":1})");
    const OwnedJson array = parsed(source);
    EXPECT_EQ(addJsonStringArrayToObject(object.get(), "list", array.get()), nullptr);
    for (const JsonNode *node = member(object, "list")->child; node; node = node->next) {
        EXPECT_EQ(node->type, JSON_KIND_STRING);
        EXPECT_TRUE(!node->next || node->next->prev == node);
    }
    EXPECT_EQ(plain(array), source);
    return plain(object);
}

TEST(StringArray, HoldsThePrintedElementsWithoutQuotes) {
    EXPECT_EQ(string_array(R"(["a","b"])"), R"({"first":1,"list":["a","b"]})");
    EXPECT_EQ(string_array("[1,2]"), R"({"first":1,"list":["1","2"]})");
    EXPECT_EQ(string_array("[]"), R"({"first":1,"list":[]})");
    EXPECT_EQ(string_array("[true,null,2.5,[1,\"x\"]]"),
              R"({"first":1,"list":["true","null","2.5","[1, x]"]})");
    EXPECT_EQ(string_array(R"([{"k":"v"}])"), R"({"first":1,"list":["{\n\tk:\tv\n}"]})");
    EXPECT_EQ(string_array(R"(["q\"b\\n\nu\u0001"])"), R"({"first":1,"list":["qbnnuu0001"]})");
    EXPECT_EQ(string_array(R"({"a":1,"b":"x"})"), R"({"first":1,"list":["1","x"]})");
}

TEST(StringArray, OfNullAddsOneArrayAndReturnsAnother) {
    OwnedJson object(createJsonObject());
    OwnedJson extra(addJsonStringArrayToObject(object.get(), "list", nullptr));
    ASSERT_NE(extra, nullptr);
    EXPECT_EQ(plain(extra), "[]");
    EXPECT_EQ(plain(object), R"({"list":[]})");
    EXPECT_NE(extra.get(), member(object, "list"));
}

TEST(StringArray, WithoutPlaceForItAddsNothing) {
    const MemoryWatch watch;
    {
        const OwnedJson source = parsed("[1]");
        OwnedJson object(createJsonObject());
        const std::size_t blocks = memory_live();
        EXPECT_EQ(addJsonStringArrayToObject(nullptr, "list", source.get()), nullptr);
        EXPECT_EQ(addJsonStringArrayToObject(object.get(), nullptr, source.get()), nullptr);
        EXPECT_EQ(plain(object), "{}");
        EXPECT_EQ(memory_live(), blocks);
        EXPECT_EQ(plain(OwnedJson(addJsonStringArrayToObject(nullptr, "list", nullptr))), "[]");
    }
    EXPECT_EQ(memory_live(), 0u);
}

TEST(StringArray, MayReadTheObjectItGrows) {
    OwnedJson object = parsed(R"({"a":"x"})");
    addJsonStringArrayToObject(object.get(), "l", object.get());
    EXPECT_EQ(plain(object), R"({"a":"x","l":["x","[x]"]})");
}

using Compare = int (*)(const JsonNode *, const char *, const JsonNode *, const char *) noexcept;

struct CompareCase {
    const char *key_a;
    const char *key_b;
    int result;
};

void check(Compare compare, const CompareCase *rows, std::size_t count) {
    const char *text =
        R"({"one":1,"One2":1.9,"two":2,"on":true,"on2":true,"off":false,"off2":false,)"
        R"("text":"1","none":null})";
    const OwnedJson a = parsed(text);
    const OwnedJson b = parsed(text);
    for (std::size_t i = 0; i < count; ++i) {
        const CompareCase &row = rows[i];
        EXPECT_EQ(compare(a.get(), row.key_a, b.get(), row.key_b), row.result)
            << row.key_a << " " << row.key_b;
        EXPECT_EQ(compare(nullptr, row.key_a, b.get(), row.key_b), 2);
        EXPECT_EQ(compare(a.get(), row.key_a, nullptr, row.key_b), 2);
        EXPECT_EQ(compare(a.get(), nullptr, b.get(), row.key_b), 2);
        EXPECT_EQ(compare(a.get(), row.key_a, b.get(), nullptr), 2);
    }
    EXPECT_EQ(compare(nullptr, "one", nullptr, "one"), 2);
}

TEST(Compare, Ints) {
    const CompareCase rows[] = {
        {"one", "ONE", 0},     {"one", "one2", 0},        {"one", "two", 1},  {"two", "one", 1},
        {"one", "text", 2},    {"text", "one", 2},        {"on", "on2", 2},   {"one", "missing", 2},
        {"missing", "one", 2}, {"missing", "missing", 2}, {"none", "none", 2}};
    check(compareJsonIntValueForKey, rows, std::size(rows));
}

TEST(Compare, Bools) {
    const CompareCase rows[] = {{"on", "on2", 0},   {"off", "off2", 0},       {"on", "off", 1},
                                {"off", "on", 1},   {"one", "on", 2},         {"on", "one", 2},
                                {"one", "one", 2},  {"on", "missing", 2},     {"missing", "off", 2},
                                {"none", "off", 2}, {"missing", "missing", 2}};
    check(compareJsonBoolValueForKey, rows, std::size(rows));
}

}  // namespace
