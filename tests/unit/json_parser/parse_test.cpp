// Parsing: kinds, links, strings, numbers as doubles, and text that is ignored.
#include <climits>
#include <cmath>

#include "json_test.h"

namespace {

TEST(Parse, GivesEveryKindItsCode) {
    const OwnedJson document = parsed(R"([false, true, null, 1, "x", [], {}])");
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(getJsonArrayItem(document.get(), i)->type, i);
    }
    EXPECT_EQ(document->type, JSON_KIND_ARRAY);
    EXPECT_EQ(getJsonArraySize(document.get()), 7);
}

TEST(Parse, LeavesUnusedFieldsZero) {
    const OwnedJson document = parsed(R"({"t":true,"f":false,"n":null,"s":"x","a":[],"d":2.5})");
    EXPECT_EQ(member(document, "t")->valueint, 1);
    for (const char *key : {"f", "n", "s", "a"}) {
        EXPECT_EQ(member(document, key)->valueint, 0) << key;
    }
    for (const JsonNode *node = document->child; node; node = node->next) {
        const bool is_string = node->type == JSON_KIND_STRING;
        EXPECT_EQ(node->valuestring != nullptr, is_string) << node->string;
        EXPECT_EQ(node->valuedouble, node->type == JSON_KIND_NUMBER ? 2.5 : 0.0) << node->string;
        EXPECT_EQ(node->valueulonglong, 0u) << node->string;
        EXPECT_EQ(node->child, nullptr) << node->string;
    }
    EXPECT_EQ(document->string, nullptr);
    EXPECT_EQ(document->valuestring, nullptr);
}

TEST(Parse, LinksSiblingsBothWays) {
    const OwnedJson document = parsed(R"({"a":[10,20,30],"b":1})");
    const JsonNode *first = document->child;
    EXPECT_EQ(document->next, nullptr);
    EXPECT_EQ(document->prev, nullptr);
    EXPECT_EQ(first->prev, nullptr);
    EXPECT_EQ(first->next->prev, first);
    EXPECT_EQ(first->next->next, nullptr);
    const JsonNode *element = first->child;
    EXPECT_EQ(element->prev, nullptr);
    EXPECT_EQ(element->next->next->prev, element->next);
    EXPECT_EQ(element->next->next->valueint, 30);
}

TEST(Parse, SkipsBytes1To32BeforeEveryToken) {
    std::string blanks;
    for (char byte = 1; byte <= 32; ++byte) {
        blanks += byte;
    }
    std::string text;
    for (const char *token : {"{", "\"a\"", ":", "[", "1", ",", "2", "]", "}"}) {
        text += blanks + token;
    }
    EXPECT_EQ(plain(parsed(text)), R"({"a":[1,2]})");
    EXPECT_EQ(parsed("[\x7f]"), nullptr);
}

TEST(Parse, RecognisesLiteralsByTheirFirstBytes) {
    EXPECT_EQ(parsed("nullify")->type, JSON_KIND_NULL);
    EXPECT_EQ(parsed("falsehood")->type, JSON_KIND_FALSE);
    EXPECT_EQ(parsed("trueish")->type, JSON_KIND_TRUE);
    for (const char *text :
         {"nul", "fals", "tru", "Null", "TRUE", "x", "", " ", "]", "}", ":", ","}) {
        EXPECT_EQ(parsed(text), nullptr) << text;
    }
    EXPECT_EQ(parsed("[truex]"), nullptr);
}

TEST(Parse, IgnoresWhatFollowsTheFirstValue) {
    const OwnedJson document = parsed("{} and more");
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(document->type, JSON_KIND_OBJECT);
    EXPECT_EQ(document->child, nullptr);
    EXPECT_EQ(plain(parsed("[1] \"open 5.")), "[1]");
    EXPECT_EQ(plain(parsed("7 8")), "7");
    EXPECT_EQ(plain(parsed("\"a\"1.")), "\"a\"");
}

TEST(Parse, ReadsStrings) {
    const struct {
        const char *text;
        const char *value;
    } cases[] = {
        {R"("")", ""},
        {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
        {R"("\u0041\u00e9\u20AC\ud83d\ude00")", "A\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"},
        {"\"\x80\xff\x01\n\"", "\x80\xff\x01\n"},
        {R"("-1 2.5 \" 3")", "-1 2.5 \" 3"},
        {R"("cut\u0000off")", "cut"},
    };
    for (const auto &row : cases) {
        const OwnedJson document = parsed(row.text);
        ASSERT_NE(document, nullptr) << row.text;
        EXPECT_STREQ(document->valuestring, row.value) << row.text;
    }
}

TEST(Parse, ReadsNumbers) {
    const struct {
        const char *text;
        double value;
        int truncated;
    } cases[] = {
        {"0", 0, 0},
        {"-0", -0.0, 0},
        {"80", 80, 80},
        {"80.9", 80.9, 80},
        {"-80.9", -80.9, -80},
        {"007", 7, 7},
        {"-05", -5, -5},
        {"0.5", 0.5, 0},
        {"1e3", 1000, 1000},
        {"1E3", 1000, 1000},
        {"1e+3", 1000, 1000},
        {"1.25e-2", 0.0125, 0},
        {"12.5e1", 125, 125},
        {"2147483647", 2147483647.0, INT_MAX},
        {"2147483648", 2147483648.0, INT_MAX},
        {"-2147483648", -2147483648.0, INT_MIN},
        {"-2147483649", -2147483649.0, INT_MIN},
        {"1e300", 1e300, INT_MAX},
        {"-1e300", -1e300, INT_MIN},
        {"1e999", HUGE_VAL, INT_MAX},
        {"1e-999", 0, 0},
        {"18446744073709551615", 18446744073709551616.0, INT_MAX},
    };
    for (const auto &row : cases) {
        for (const bool nested : {false, true}) {
            const std::string text = nested ? "[" + std::string(row.text) + "]" : row.text;
            const OwnedJson document = parsed(text);
            ASSERT_NE(document, nullptr) << text;
            const JsonNode *node = nested ? document->child : document.get();
            EXPECT_EQ(node->type, JSON_KIND_NUMBER) << text;
            EXPECT_EQ(node->valuedouble, row.value) << text;
            EXPECT_EQ(node->valueint, row.truncated) << text;
            EXPECT_EQ(node->valueulonglong, 0u) << text;
        }
    }
}

TEST(Parse, ReadsNumbersOfAnyLength) {
    const std::string digits(400, '9');
    EXPECT_EQ(parsed("[" + digits + "]")->child->valuedouble, HUGE_VAL);
    EXPECT_EQ(parsed("[0." + digits + ",2]")->child->valuedouble, 1.0);
    EXPECT_EQ(parsed("[1" + std::string(100, '0') + "e-100]")->child->valuedouble, 1.0);
    EXPECT_EQ(parsed(std::string(500, '0') + "12")->valuedouble, 12.0);
    EXPECT_EQ(parsed("{\"a\":1." + std::string(63, '0') + "e2}")->child->valueint, 100);
}

TEST(Parse, TakesNothingBeyondTheNumber) {
    // Inside an array what follows the number makes the parse fail there; at the top it is ignored.
    const struct {
        const char *text;
        std::ptrdiff_t length;
        double value;
    } cases[] = {{"1.", 1, 1},   {"1.e5", 1, 1}, {"1e", 1, 1},      {"1e+", 1, 1},
                 {"1E-", 1, 1},  {"0x10", 1, 0}, {"1-2", 1, 1},     {"1.5.5", 3, 1.5},
                 {"12e", 2, 12}, {"1+1", 1, 1},  {"15e1.5", 4, 150}};
    for (const auto &row : cases) {
        const OwnedJson document = parsed(row.text);
        ASSERT_NE(document, nullptr) << row.text;
        EXPECT_EQ(document->valuedouble, row.value) << row.text;
        EXPECT_EQ(error_offset("[" + std::string(row.text) + "]"), 1 + row.length) << row.text;
    }
}

TEST(Parse, RefusesWhatIsNoNumber) {
    for (const char *text : {"-", "-.5", "-e5", ".5", "+1", "--1", "-x", "e5", "NaN", "-inf"}) {
        EXPECT_EQ(error_offset(text), 0) << text;
        EXPECT_EQ(error_offset("[1, " + std::string(text) + "]"), 4) << text;
    }
}

TEST(Parse, LeavesTheTextAlone) {
    const std::string text = R"({"a":[1.5,-2,"3"]} 1.)";
    const std::string before = text;
    parsed(text);
    parsed_uint64(text);
    EXPECT_EQ(text, before);
}

TEST(Parse, IsLinear) {
    // Forms that a scan from every number, or for every string, would take minutes for.
    for (const char *piece : {"1,", "\"\",", "-", "1.", "\\\"", "\"", "[],"}) {
        std::string text = "[";
        while (text.size() < 2000000) {
            text += piece;
        }
        OwnedJson as_double(parseJsonText(text.c_str()));
        EXPECT_EQ(as_double, nullptr) << piece;
        OwnedJson as_uint64(parseJsonTextLongLongUint((text + "0]").c_str()));
        EXPECT_EQ(as_uint64 != nullptr, std::string(piece).back() == ',') << piece;
    }
}

}  // namespace
