// Navigation and the typed getters.
#include <cstring>

#include "json_test.h"
#include "log/log.h"

namespace {

const char *const kDocument =
    R"({"name":"switch","port":80,"ratio":80.9,"portText":"80","on":true,"off":false,)"
    R"("none":null,"list":[5,6,7],"inner":{"deep":1},"Twice":1,"twice":2})";

TEST(Read, FindsKeysWithoutRegardToCase) {
    const OwnedJson document = parsed(R"({"message":"OK"})");
    EXPECT_STREQ(getJsonStringValueForKey(document.get(), "Message"), "OK");
    EXPECT_STREQ(getJsonStringValueForKey(document.get(), "MESSAGE"), "OK");
    for (const char *key : {"messag", "messages", "", "m", "messagE "}) {
        EXPECT_EQ(member(document, key), nullptr) << key;
    }
}

TEST(Read, FoldsAsciiLettersOnly) {
    const OwnedJson document = parsed("{\"a[`{@\":1,\"\xC3\x89\":2,\"k1_\":3,\"\":4,\"aZ\":5}");
    EXPECT_EQ(getJsonIntValue(member(document, "A[`{@")), 1);
    for (const char *key : {"a{`{@", "a[@{@", "a[`[@", "a[`{`", "\xC3\xA9", "\xE3\x89", "k1\x7f"}) {
        EXPECT_EQ(member(document, key), nullptr) << key;
    }
    EXPECT_EQ(getJsonIntValue(member(document, "\xC3\x89")), 2);
    EXPECT_EQ(getJsonIntValue(member(document, "K1_")), 3);
    EXPECT_EQ(getJsonIntValue(member(document, "")), 4);
    EXPECT_EQ(getJsonIntValue(member(document, "Az")), 5);
}

TEST(Read, TakesTheFirstMemberThatMatches) {
    const OwnedJson document = parsed(kDocument);
    EXPECT_EQ(getJsonIntValueForKey(document.get(), "twice", nullptr), 1);
    EXPECT_EQ(getJsonIntValueForKey(document.get(), "TWICE", nullptr), 1);
}

TEST(Read, LooksAtDirectMembersOnly) {
    const OwnedJson document = parsed(kDocument);
    EXPECT_EQ(member(document, "deep"), nullptr);
    EXPECT_EQ(getJsonObjectForKey(member(document, "list"), "list"), nullptr);
    EXPECT_EQ(getJsonObjectForKey(member(document, "port"), "port"), nullptr);
}

TEST(Read, TypeIsTheCodeWithoutTheFlag) {
    JsonNode node{};
    for (const int kind : {0, 1, 2, 3, 4, 5, 6, 7, 8}) {
        node.type = kind;
        EXPECT_EQ(getJsonType(&node), kind);
        node.type = kind | JSON_REFERENCE_FLAG;
        EXPECT_EQ(getJsonType(&node), kind);
    }
}

TEST(Read, CountsAndIndexesArrays) {
    const OwnedJson document = parsed(kDocument);
    const JsonNode *list = member(document, "list");
    EXPECT_EQ(getJsonArraySize(list), 3);
    EXPECT_EQ(getJsonArraySize(document.get()), 11);
    EXPECT_EQ(getJsonArraySize(member(document, "port")), 0);
    EXPECT_EQ(getJsonIntValue(getJsonArrayItem(list, 0)), 5);
    EXPECT_EQ(getJsonIntValue(getJsonArrayItem(list, 2)), 7);
    EXPECT_EQ(getJsonArrayItem(list, 3), nullptr);
    EXPECT_EQ(getJsonArrayItem(list, 2147483647), nullptr);
    EXPECT_EQ(getJsonArrayItem(list, -1), list->child);
    EXPECT_EQ(getJsonArrayItem(list, -2147483647 - 1), list->child);
    const OwnedJson empty(createJsonArray());
    EXPECT_EQ(getJsonArrayItem(empty.get(), 0), nullptr);
    EXPECT_EQ(getJsonArrayItem(empty.get(), -1), nullptr);
}

TEST(Read, WalksChildAndNext) {
    const OwnedJson document = parsed("[1,2]");
    const JsonNode *first = getJsonChild(document.get());
    EXPECT_EQ(getJsonIntValue(first), 1);
    EXPECT_EQ(getJsonIntValue(getJsonNext(first)), 2);
    EXPECT_EQ(getJsonNext(getJsonNext(first)), nullptr);
    EXPECT_EQ(getJsonChild(first), nullptr);
}

TEST(Read, BareValuesIgnoreTheKind) {
    JsonNode node{};
    char text[] = "text";
    node.type = JSON_KIND_NULL;
    node.valuestring = text;
    node.valueint = -7;
    node.valuedouble = 2.5;
    EXPECT_EQ(getJsonStringValue(&node), text);
    EXPECT_EQ(getJsonIntValue(&node), -7);
    EXPECT_EQ(getJsonDoubleValue(&node), 2.5);
}

TEST(Read, StringIsOfAStringMemberOnly) {
    const OwnedJson document = parsed(kDocument);
    EXPECT_EQ(getJsonStringValueForKey(document.get(), "name"),
              member(document, "name")->valuestring);
    member(document, "port")->valuestring = strdup("stray");
    for (const char *key : {"port", "on", "off", "none", "list", "inner", "missing"}) {
        EXPECT_EQ(getJsonStringValueForKey(document.get(), key), nullptr) << key;
    }
}

struct IntCase {
    const char *key;
    int value;
    int found;
};

TEST(Read, IntIsOfANumberMemberOnly) {
    OwnedJson document = parsed(kDocument);
    addJsonUlongToObject(document.get(), "kind7", 7);
    addJsonLongLongUintToObject(document.get(), "kind8", 8);
    const IntCase cases[] = {{"port", 80, 1}, {"ratio", 80, 1}, {"portText", 0, 0}, {"on", 0, 0},
                             {"off", 0, 0},   {"none", 0, 0},   {"list", 0, 0},     {"inner", 0, 0},
                             {"kind7", 0, 0}, {"kind8", 0, 0},  {"missing", 0, 0}};
    for (const IntCase &row : cases) {
        int found = -1;
        EXPECT_EQ(getJsonIntValueForKey(document.get(), row.key, &found), row.value) << row.key;
        EXPECT_EQ(found, row.found) << row.key;
    }
}

TEST(Read, BoolIsOfTrueOrFalseOnly) {
    const OwnedJson document =
        parsed(R"({"on":true,"off":false,"one":1,"zero":0,"t":"true","n":null})");
    const IntCase cases[] = {{"on", 1, 1}, {"off", 0, 1}, {"one", 0, 0},    {"zero", 0, 0},
                             {"t", 0, 0},  {"n", 0, 0},   {"missing", 0, 0}};
    for (const IntCase &row : cases) {
        int found = -1;
        EXPECT_EQ(getJsonBoolValueForKey(document.get(), row.key, &found), row.value) << row.key;
        EXPECT_EQ(found, row.found) << row.key;
    }
}

TEST(Read, Uint64IsOfItsOwnKindAndReportsAMiss) {
    OwnedJson document = parsed(kDocument);
    addJsonUlongToObject(document.get(), "kind7", 7);
    addJsonLongLongUintToObject(document.get(), "kind8", 8);
    testing::internal::CaptureStdout();
    int found = -1;
    EXPECT_EQ(getJsonLongLongUintValueForKey(document.get(), "Kind8", &found), 8u);
    EXPECT_EQ(found, 1);
    for (const char *key : {"port", "kind7", "%s%n"}) {
        found = -1;
        EXPECT_EQ(getJsonLongLongUintValueForKey(document.get(), key, &found), 0u);
        EXPECT_EQ(found, 0);
    }
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "\ngetJsonLongLongUintValueForKey IntValue of port not found\n"
              "\ngetJsonLongLongUintValueForKey IntValue of kind7 not found\n"
              "\ngetJsonLongLongUintValueForKey IntValue of %s%n not found\n");
}

TEST(Read, DoubleIsOfAnyMember) {
    OwnedJson document = parsed(kDocument);
    EXPECT_EQ(getJsonDoubleValueForKey(document.get(), "RATIO"), 80.9);
    EXPECT_EQ(getJsonDoubleValueForKey(document.get(), "on"), 0.0);
    EXPECT_EQ(getJsonDoubleValueForKey(document.get(), "missing"), 0.0);
    member(document, "name")->valuedouble = 1.5;
    EXPECT_EQ(getJsonDoubleValueForKey(document.get(), "name"), 1.5);
}

TEST(Read, FlaggedMembersKeepTheirKind) {
    OwnedJson document = parsed(R"({"n":5,"t":true})");
    member(document, "n")->type |= JSON_REFERENCE_FLAG;
    member(document, "t")->type |= JSON_REFERENCE_FLAG;
    EXPECT_EQ(getJsonIntValueForKey(document.get(), "n", nullptr), 5);
    EXPECT_EQ(getJsonBoolValueForKey(document.get(), "t", nullptr), 1);
}

TEST(Read, NullHoldsNothing) {
    EXPECT_EQ(getJsonType(nullptr), 0);
    EXPECT_EQ(getJsonStringValue(nullptr), nullptr);
    EXPECT_EQ(getJsonIntValue(nullptr), 0);
    EXPECT_EQ(getJsonDoubleValue(nullptr), 0.0);
    EXPECT_EQ(getJsonChild(nullptr), nullptr);
    EXPECT_EQ(getJsonNext(nullptr), nullptr);
    EXPECT_EQ(getJsonArraySize(nullptr), 0);
    EXPECT_EQ(getJsonArrayItem(nullptr, 0), nullptr);
    deleteJson(nullptr);
}

// Of all of them only the 64-bit getter tells, on standard output and not in the log.
TEST(Read, NullObjectsKeysAndFlagsMissEveryMember) {
    const OwnedJson document = parsed(kDocument);
    testing::internal::CaptureStdout();
    g_file_log = 1;  // without a path: a log line would be reported on standard output
    for (const JsonNode *object : {static_cast<JsonNode *>(nullptr), document.get()}) {
        const char *key = object ? nullptr : "port";
        int found[3] = {-1, -1, -1};
        EXPECT_EQ(getJsonObjectForKey(object, key), nullptr);
        EXPECT_EQ(getJsonStringValueForKey(object, key), nullptr);
        EXPECT_EQ(getJsonDoubleValueForKey(object, key), 0.0);
        EXPECT_EQ(getJsonIntValueForKey(object, key, &found[0]), 0);
        EXPECT_EQ(getJsonBoolValueForKey(object, key, &found[1]), 0);
        EXPECT_EQ(getJsonLongLongUintValueForKey(object, key, &found[2]), 0u);
        EXPECT_EQ(found[0] + found[1] + found[2], 0);
        EXPECT_EQ(getJsonIntValueForKey(object, key, nullptr), 0);
        EXPECT_EQ(getJsonBoolValueForKey(object, key, nullptr), 0);
        EXPECT_EQ(getJsonLongLongUintValueForKey(object, key, nullptr), 0u);
    }
    g_file_log = 0;
    const auto miss = [](const std::string &key) {
        return "\ngetJsonLongLongUintValueForKey IntValue of " + key + " not found\n";
    };
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              miss("port") + miss("port") + miss("(null)") + miss("(null)"));
    EXPECT_EQ(getJsonIntValueForKey(document.get(), "port", nullptr), 80);
}

}  // namespace
