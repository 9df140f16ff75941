// Parsing with numbers as exact unsigned 64-bit integers.
#include "json_test.h"

namespace {

TEST(Uint64Parse, ReadsNumbersByItsOwnRule) {
    const struct {
        const char *text;
        uint64_t value;
    } cases[] = {
        {"0", 0},
        {"5", 5},
        {"05", 5},
        {"0123", 123},
        {"1000000000000", 1000000000000},
        {"9007199254740993", 9007199254740993},
        {"18446744073709551615", UINT64_MAX},
        {"18446744073709551616", 0},
        {"18446744073709551617", 1},
        {"99999999999999999999", 7766279631452241919u},
        {"1000000000000000000000000000000000000000000000000000000000000000000000000000001", 1},
    };
    for (const auto &row : cases) {
        const OwnedJson top = parsed_uint64(row.text);
        const OwnedJson array = parsed_uint64("[" + std::string(row.text) + "]");
        const OwnedJson object = parsed_uint64("{\"a\":{\"b\": " + std::string(row.text) + " }}");
        ASSERT_TRUE(top && array && object) << row.text;
        for (const JsonNode *node : {top.get(), array->child, object->child->child}) {
            EXPECT_EQ(node->type, JSON_KIND_UINT64) << row.text;
            EXPECT_EQ(node->valueulonglong, row.value) << row.text;
            EXPECT_EQ(node->valueint, 0) << row.text;
            EXPECT_EQ(node->valuedouble, 0.0) << row.text;
        }
    }
}

TEST(Uint64Parse, ReadsTheTopAndIgnoresTheRest) {
    const struct {
        const char *text;
        uint64_t value;
    } cases[] = {{"-5", 0},    {"1.5", 1},   {"007", 0}, {"1e5", 1}, {"-", 0},   {" \n-7", 0},
                 {"00", 0},    {"12-3", 12}, {"5 6", 5}, {"0.5", 0}, {"-.5", 0}, {"12.", 12},
                 {"34+1", 34}, {"0x1f", 0},  {"7,8", 7}, {"-{", 0},  {"9\"", 9}};
    for (const auto &row : cases) {
        const OwnedJson document = parsed_uint64(row.text);
        ASSERT_NE(document, nullptr) << row.text;
        EXPECT_EQ(document->type, JSON_KIND_UINT64) << row.text;
        EXPECT_EQ(document->valueulonglong, row.value) << row.text;
    }
}

TEST(Uint64Parse, FailsAtTheByteTheNumberLeaves) {
    const struct {
        const char *text;
        std::ptrdiff_t offset;
    } cases[] = {
        {"[-5]", 1},        {"[1.5]", 2},       {"[007]", 2},
        {"[15.5]", 3},      {"[1e5]", 2},       {"[123E5]", 4},
        {"[00]", 2},        {"[-]", 1},         {"[1-2]", 2},
        {"[12+3]", 3},      {"[0.5]", 2},       {"[1,22,3.5]", 7},
        {"{\"a\":-5}", 5},  {"{\"a\":1.5}", 6}, {"{\"a\":[1,007]}", 9},
        {"[[1],-0]", 5},    {"[1 -2]", 3},      {"[ - 5]", 2},
        {"[\"-5\",-5]", 6}, {"{1:2}", 1},       {"{-:2}", 1},
        {"[1,x]", 3},       {"[12", 3},         {"\xEF\xBB\xBF[1]", 0},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(parseJsonTextLongLongUint(row.text), nullptr) << row.text;
        EXPECT_EQ(cJSON_GetErrorPtr() - row.text, row.offset) << row.text;
    }
}

TEST(Uint64Parse, SharesTheLimitOfNesting) {
    const std::string open(1000, '[');
    const std::string close(1000, ']');
    EXPECT_NE(parsed_uint64(open + "1" + close), nullptr);
    EXPECT_EQ(parsed_uint64("[" + open + "1" + close + "]"), nullptr);
    EXPECT_EQ(parsed_uint64(std::string(100000, '[')), nullptr);
}

}  // namespace
