// Duplicating and deleting documents, whatever their depth and whoever owns their parts.
#include "json_test.h"

namespace {

TEST(Duplicate, CopiesAllButTheUint64) {
    OwnedJson original = parsed(R"({"s":"x","n":2.5,"t":true,"a":[1,{"b":null}]})");
    addJsonUlongToObject(original.get(), "u", 7);
    addJsonLongLongUintToObject(original.get(), "l", 8);
    const OwnedJson copy(duplicateJson(original.get(), 1));
    EXPECT_EQ(plain(copy), R"({"s":"x","n":2.5,"t":true,"a":[1,{"b":null}],"u":7,"l":0})");
    EXPECT_EQ(member(copy, "l")->type, JSON_KIND_UINT64);
    EXPECT_EQ(member(copy, "l")->valueulonglong, 0u);
    EXPECT_EQ(member(copy, "n")->valueint, 2);
    EXPECT_EQ(member(copy, "t")->valueint, 1);
    EXPECT_NE(member(copy, "s")->valuestring, member(original, "s")->valuestring);
    EXPECT_NE(member(copy, "s")->string, member(original, "s")->string);
    EXPECT_EQ(copy->child->prev, nullptr);
    EXPECT_EQ(copy->child->next->prev, copy->child);
    EXPECT_EQ(plain(original), R"({"s":"x","n":2.5,"t":true,"a":[1,{"b":null}],"u":7,"l":8})");
}

TEST(Duplicate, StandsAloneAndMayLeaveTheChildrenOut) {
    const OwnedJson original = parsed(R"({"a":[1],"b":[2],"c":[3]})");
    const OwnedJson copy(duplicateJson(member(original, "b"), 1));
    EXPECT_STREQ(copy->string, "b");
    EXPECT_EQ(copy->next, nullptr);
    EXPECT_EQ(copy->prev, nullptr);
    EXPECT_EQ(plain(copy), "[2]");
    EXPECT_EQ(plain(OwnedJson(duplicateJson(original.get(), 0))), "{}");
    EXPECT_EQ(duplicateJson(nullptr, 1), nullptr);
}

TEST(Reference, IsFreedWithoutWhatItRefersTo) {
    const MemoryWatch watch;
    OwnedJson owner = parsed(R"({"list":[1,2],"text":"shared"})");
    const std::size_t blocks = memory_live();
    {
        OwnedJson borrower(createJsonObject());
        JsonNode *list = createJsonArray();
        list->type |= JSON_REFERENCE_FLAG;
        list->child = member(owner, "list")->child;
        addJsonItemToObject(borrower.get(), "list", list);
        addJsonStringToObject(borrower.get(), "text", "x");
        JsonNode *text = member(borrower, "text");
        cJSON_free(text->valuestring);
        text->type |= JSON_REFERENCE_FLAG;
        text->valuestring = member(owner, "text")->valuestring;
        EXPECT_EQ(plain(borrower), R"({"list":[1,2],"text":"shared"})");

        const OwnedJson copy(duplicateJson(borrower.get(), 1));
        EXPECT_EQ(plain(copy), plain(borrower));
        EXPECT_EQ(member(copy, "list")->type, JSON_KIND_ARRAY);
        EXPECT_NE(member(copy, "list")->child, list->child);
    }
    EXPECT_EQ(memory_live(), blocks);
    EXPECT_EQ(plain(owner), R"({"list":[1,2],"text":"shared"})");
    owner.reset();
    EXPECT_EQ(memory_live(), 0u);
}

JsonNode *nested_arrays(int depth) {
    JsonNode *outer = createJsonArray();
    for (int i = 1; i < depth; ++i) {
        JsonNode *around = createJsonArray();
        addJsonItemToArray(around, outer);
        outer = around;
    }
    return outer;
}

TEST(Depth, DeletesAMillionLevels) {
    const MemoryWatch watch;
    JsonNode *deep = nested_arrays(1000000);
    EXPECT_EQ(memory_live(), 1000000u);
    deleteJson(deep);
    EXPECT_EQ(memory_live(), 0u);
}

TEST(Depth, PrintsAndDuplicatesTenThousandLevels) {
    const OwnedJson deep(nested_arrays(10000));
    const std::string text = std::string(10000, '[') + std::string(10000, ']');
    EXPECT_EQ(plain(deep), text);
    EXPECT_EQ(formatted(deep), text);
    EXPECT_EQ(plain(OwnedJson(duplicateJson(deep.get(), 1))), text);

    const OwnedJson deeper(nested_arrays(10001));
    EXPECT_EQ(printJson(deeper.get()), nullptr);
    EXPECT_EQ(printJsonUnformatted(deeper.get()), nullptr);
    EXPECT_EQ(duplicateJson(deeper.get(), 1), nullptr);
    EXPECT_NE(OwnedJson(duplicateJson(deeper.get(), 0)), nullptr);
    const OwnedJson deepest(nested_arrays(1000000));
    EXPECT_EQ(printJson(deepest.get()), nullptr);
    EXPECT_EQ(duplicateJson(deepest.get(), 1), nullptr);
}

TEST(Delete, TakesTheSiblingsThatFollow) {
    const MemoryWatch watch;
    OwnedJson document = parsed(R"([1,[2,"x",{"a":[3]}],4])");
    JsonNode *second = document->child->next;
    document->child->next = nullptr;
    deleteJson(second);
    EXPECT_EQ(plain(document), "[1]");
    document.reset();
    EXPECT_EQ(memory_live(), 0u);
}

}  // namespace
