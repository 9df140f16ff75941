// Building documents.
#include <climits>
#include <cmath>
#include <cstring>

#include "json_test.h"

namespace {

TEST(Build, CreatesZeroedContainers) {
    const OwnedJson object(createJsonObject());
    const OwnedJson array(createJsonArray());
    EXPECT_EQ(object->type, JSON_KIND_OBJECT);
    EXPECT_EQ(array->type, JSON_KIND_ARRAY);
    for (const JsonNode *node : {object.get(), array.get()}) {
        JsonNode zero{};
        zero.type = node->type;
        EXPECT_EQ(std::memcmp(node, &zero, sizeof zero), 0);
    }
}

TEST(Build, AddsEveryKindOfMember) {
    OwnedJson object(createJsonObject());
    addJsonStringToObject(object.get(), "s", "text");
    addJsonIntToObject(object.get(), "i", -5);
    addJsonUlongToObject(object.get(), "u", 4294967295u);
    addJsonBoolToObject(object.get(), "t", 2);
    addJsonBoolToObject(object.get(), "f", 0);
    addJsonDoubleToObject(object.get(), "d", -2.75);
    addJsonLongLongUintToObject(object.get(), "l", UINT64_MAX);
    EXPECT_EQ(plain(object), R"({"s":"text","i":-5,"u":4294967295,"t":true,"f":false,"d":-2.8,)"
                             R"("l":18446744073709551615})");
    const int kinds[] = {4, 3, 7, 1, 0, 3, 8};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(getJsonArrayItem(object.get(), i)->type, kinds[i]) << i;
    }
    EXPECT_EQ(member(object, "i")->valueint, -5);
    EXPECT_EQ(member(object, "i")->valuedouble, -5.0);
    EXPECT_EQ(member(object, "u")->valueint, -1);
    EXPECT_EQ(member(object, "u")->valuedouble, 0.0);
    EXPECT_EQ(member(object, "t")->valueint, 0);
    EXPECT_EQ(member(object, "d")->valueint, -2);
    EXPECT_EQ(member(object, "d")->valuedouble, -2.75);
    EXPECT_EQ(member(object, "l")->valueulonglong, UINT64_MAX);
}

TEST(Build, CopiesKeysAndTexts) {
    OwnedJson object(createJsonObject());
    char key[] = "key";
    char text[] = "text";
    addJsonStringToObject(object.get(), key, text);
    key[0] = text[0] = '?';
    EXPECT_EQ(plain(object), R"({"key":"text"})");
}

TEST(Build, KeepsDoublesWithinTheIntsRange) {
    OwnedJson object(createJsonObject());
    const struct {
        double value;
        int truncated;
    } cases[] = {{0.9, 0},
                 {-0.9, 0},
                 {3.999, 3},
                 {-3.999, -3},
                 {2147483646.5, 2147483646},
                 {2147483647.0, INT_MAX},
                 {2147483648.0, INT_MAX},
                 {1e300, INT_MAX},
                 {HUGE_VAL, INT_MAX},
                 {-2147483647.5, -2147483647},
                 {-2147483648.0, INT_MIN},
                 {-1e300, INT_MIN},
                 {-HUGE_VAL, INT_MIN},
                 {std::nan(""), 0}};
    for (const auto &row : cases) {
        addJsonDoubleToObject(object.get(), "d", row.value);
    }
    const JsonNode *node = object->child;
    for (const auto &row : cases) {
        EXPECT_EQ(node->valueint, row.truncated) << row.value;
        EXPECT_TRUE(node->valuedouble == row.value || std::isnan(row.value));
        node = node->next;
    }
}

TEST(Build, AddsItemsAtTheEndWithTheirNewName) {
    OwnedJson object = parsed(R"({"first":1})");
    JsonNode *inner = createJsonObject();
    inner->string = strdup("old name");
    addJsonItemToObject(object.get(), "inner", inner);
    EXPECT_STREQ(inner->string, "inner");
    EXPECT_EQ(inner->prev, object->child);
    EXPECT_EQ(object->child->next, inner);
    EXPECT_EQ(inner->next, nullptr);
    addJsonIntToObject(inner, "deep", 2);
    addJsonIntToObject(object.get(), "first", 3);
    EXPECT_EQ(plain(object), R"({"first":1,"inner":{"deep":2},"first":3})");
}

TEST(Build, TakesTheNodesOwnNameAsKey) {
    OwnedJson object(createJsonObject());
    JsonNode *node = createJsonArray();
    node->string = strdup("same");
    addJsonItemToObject(object.get(), node->string, node);
    EXPECT_EQ(plain(object), R"({"same":[]})");
}

TEST(Build, AppendsToArrays) {
    OwnedJson array(createJsonArray());
    JsonNode *first = createJsonObject();
    JsonNode *second = createJsonArray();
    addJsonItemToArray(array.get(), first);
    addJsonItemToArray(array.get(), second);
    addJsonItemToArray(second, parsed("7").release());
    EXPECT_EQ(plain(array), "[{},[7]]");
    EXPECT_EQ(first->prev, nullptr);
    EXPECT_EQ(first->next, second);
    EXPECT_EQ(second->prev, first);
    EXPECT_EQ(first->string, nullptr);
}

TEST(Build, CreatesArraysOfValues) {
    const int ints[] = {1, -2, INT_MIN};
    const double doubles[] = {0.5, 3.0, 1e10};
    const char *texts[] = {"a", "", "b\"c"};
    const OwnedJson of_ints(createJsonIntArray(ints, 3));
    const OwnedJson of_doubles(createJsonDoubleArray(doubles, 3));
    const OwnedJson of_texts(createJsonStringArray(texts, 3));
    EXPECT_EQ(plain(of_ints), "[1,-2,-2147483648]");
    EXPECT_EQ(plain(of_doubles), "[0.5,3,10000000000]");
    EXPECT_EQ(plain(of_texts), R"(["a","","b\"c"])");
    EXPECT_EQ(of_ints->type, JSON_KIND_ARRAY);
    EXPECT_EQ(of_ints->child->type, JSON_KIND_NUMBER);
    EXPECT_EQ(of_ints->child->next->valueint, -2);
    EXPECT_EQ(of_ints->child->next->prev, of_ints->child);
    EXPECT_EQ(of_doubles->child->type, JSON_KIND_NUMBER);
    EXPECT_EQ(of_doubles->child->valueint, 0);
    EXPECT_EQ(of_texts->child->type, JSON_KIND_STRING);
    EXPECT_NE(of_texts->child->valuestring, texts[0]);
    EXPECT_EQ(plain(OwnedJson(createJsonIntArray(ints, 1))), "[1]");
}

TEST(Build, ArraysOfNoneAreEmpty) {
    const int ints[] = {1};
    for (const int count : {0, -1, INT_MIN}) {
        EXPECT_EQ(plain(OwnedJson(createJsonIntArray(ints, count))), "[]");
        EXPECT_EQ(plain(OwnedJson(createJsonIntArray(nullptr, count))), "[]");
        EXPECT_EQ(plain(OwnedJson(createJsonDoubleArray(nullptr, count))), "[]");
        EXPECT_EQ(plain(OwnedJson(createJsonStringArray(nullptr, count))), "[]");
    }
    const char *texts[] = {"a", nullptr};
    EXPECT_EQ(createJsonIntArray(nullptr, 1), nullptr);
    EXPECT_EQ(createJsonDoubleArray(nullptr, 1), nullptr);
    EXPECT_EQ(createJsonStringArray(nullptr, 1), nullptr);
    EXPECT_EQ(createJsonStringArray(texts, 2), nullptr);
}

TEST(Build, NullAddsNothingAndLosesNothing) {
    const MemoryWatch watch;
    {
        OwnedJson object(createJsonObject());
        const OwnedJson item(createJsonArray());
        const std::size_t blocks = memory_live();
        for (JsonNode *target : {static_cast<JsonNode *>(nullptr), object.get()}) {
            const char *key = target ? nullptr : "key";
            addJsonStringToObject(target, key, "text");
            addJsonIntToObject(target, key, 1);
            addJsonUlongToObject(target, key, 1);
            addJsonBoolToObject(target, key, 1);
            addJsonDoubleToObject(target, key, 1);
            addJsonLongLongUintToObject(target, key, 1);
            addJsonItemToObject(target, key, item.get());
        }
        addJsonStringToObject(object.get(), "key", nullptr);
        addJsonItemToObject(object.get(), "key", nullptr);
        addJsonItemToObject(object.get(), "key", object.get());
        addJsonItemToArray(nullptr, item.get());
        addJsonItemToArray(item.get(), nullptr);
        addJsonItemToArray(item.get(), item.get());
        EXPECT_EQ(plain(object), "{}");
        EXPECT_EQ(plain(item), "[]");
        EXPECT_EQ(item->string, nullptr);
        EXPECT_EQ(memory_live(), blocks);
    }
    EXPECT_EQ(memory_live(), 0u);
}

}  // namespace
