// The texts documents print as.
#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <random>

#include "json_test.h"
#include "testing/shown_folders.h"

namespace {

std::string number_text(double value, int truncated) {
    JsonNode node{};
    node.type = JSON_KIND_NUMBER;
    node.valuedouble = value;
    node.valueint = truncated;
    const std::string text = plain(&node);
    EXPECT_EQ(formatted(&node), text);
    return text;
}

// As the builders make the node.
std::string number_text(double value) {
    const OwnedJson array(createJsonDoubleArray(&value, 1));
    return number_text(value, array->child->valueint);
}

TEST(NumberText, FollowsTheRule) {
    const struct {
        double value;
        const char *text;
    } cases[] = {
        {0, "0"},
        {-0.0, "0"},
        {3.0, "3"},
        {-7, "-7"},
        {0.5, "0.5"},
        {3.14159, "3.1"},
        {-3.14159, "-3.1"},
        {80.9, "80.9"},
        {0.04, "0.0"},
        {2147483647.0, "2147483647"},
        {-2147483648.0, "-2147483648"},
        {2147483648.0, "2147483648"},
        {-2147483649.0, "-2147483649"},
        {2147483646.5, "2.147484e+09"},
        {3e9, "3000000000"},
        {1e10, "10000000000"},
        {1e10 + 0.5, "1.000000e+10"},
        {1e9 - 0.5, "999999999.5"},
        {1e9, "1000000000"},
        {1e9 + 0.5, "1.000000e+09"},
        {-1e9 + 0.5, "-999999999.5"},
        {-1e9 - 0.5, "-1.000000e+09"},
        {1e-6, "0.0"},
        {-1e-6, "-0.0"},
        {std::nextafter(1e-6, 0), "1.000000e-06"},
        {1e-7, "1.000000e-07"},
        {DBL_EPSILON, "0"},
        {-DBL_EPSILON, "0"},
        {std::nextafter(DBL_EPSILON, 1), "2.220446e-16"},
        {1 + DBL_EPSILON, "1"},
        {1 - DBL_EPSILON, "1.0"},
        {2 + 2 * DBL_EPSILON, "2.0"},
        {1e-300, "0"},
        {1e15 + 0.5, "1.000000e+15"},
        {123456789012345678.0, "123456789012345680"},
        {1e59, "99999999999999997168788049560464200849936328366177157906432"},
        {std::nextafter(1e60, 0), "999999999999999770981173708829033734677898829826518025240576"},
        {-1e59, "-99999999999999997168788049560464200849936328366177157906432"},
        {1e60, "1.000000e+60"},
        {-1e60, "-1.000000e+60"},
        {DBL_MAX, "1.797693e+308"},
        {-DBL_MAX, "-1.797693e+308"},
        {HUGE_VAL, "inf"},
        {-HUGE_VAL, "-inf"},
    };
    for (const auto &row : cases) {
        EXPECT_EQ(number_text(row.value), row.text) << std::hexfloat << row.value;
    }
    EXPECT_NE(number_text(std::nan("")).find("nan"), std::string::npos);
}

TEST(NumberText, PrintsTheIntWhileItIsTheDouble) {
    EXPECT_EQ(number_text(5.0, 6), "5");
    EXPECT_EQ(number_text(5.5, 6), "5.5");
    EXPECT_EQ(number_text(7.0 + 8 * DBL_EPSILON, 7), "7.0");
    EXPECT_EQ(number_text(DBL_EPSILON, 0), "0");
    EXPECT_EQ(number_text(3e9, INT_MAX), "3000000000");
}

// The rule once more, worded by ranges instead of in its own order.
std::string text_by_ranges(double d, int i) {
    char text[400];
    const double size = std::fabs(d);
    const long double apart = std::fabs(static_cast<long double>(i) - d);
    const bool is_int = apart <= DBL_EPSILON && !(d > 2147483647.0) && !(d < -2147483648.0);
    const bool is_whole =
        static_cast<long double>(d) - std::floor(static_cast<long double>(d)) <= DBL_EPSILON;
    if (size >= 1e60 || (!is_int && !is_whole && (size > 1e9 || size < 1e-6))) {
        std::snprintf(text, sizeof text, "%e", d);
    } else if (!is_int) {
        std::snprintf(text, sizeof text, is_whole ? "%.0f" : "%.1f", d);
    } else {
        std::snprintf(text, sizeof text, "%d", i);
    }
    return text;
}

TEST(NumberText, AgreesWithTheRuleOnRandomValues) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 200000; ++i) {
        const double unit = static_cast<double>(random()) / 1.8446744073709552e19;
        double value = std::ldexp(unit - 0.5, static_cast<int>(random() % 240) - 30);
        if (random() % 4 == 0) {
            value = std::round(value);
        } else if (random() % 4 == 0) {
            value = std::round(value) + static_cast<double>(random() % 5) * DBL_EPSILON / 2;
        }
        const OwnedJson array(createJsonDoubleArray(&value, 1));
        ASSERT_EQ(plain(array), "[" + text_by_ranges(value, array->child->valueint) + "]")
            << std::hexfloat << value;
    }
}

TEST(NumberText, PrintsUnsignedKindsInFull) {
    JsonNode node{};
    node.type = JSON_KIND_UINT32;
    for (const uint32_t value : {0u, 1u, 2147483648u, 4294967295u}) {
        node.valueint = static_cast<int32_t>(value);
        EXPECT_EQ(plain(&node), std::to_string(value));
    }
    node.type = JSON_KIND_UINT64;
    for (const uint64_t value : {uint64_t{0}, uint64_t{1} << 63, UINT64_MAX}) {
        node.valueulonglong = value;
        EXPECT_EQ(plain(&node), std::to_string(value));
    }
}

TEST(NumberText, IsTheSameInEveryLocale) {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    setenv("LOCPATH", world::inside(TEST_LOCALES).c_str(), 1);
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(plain(parsed("[0.5,2.5e-9,-1.25]")), "[0.5,2.500000e-09,-1.2]");
    std::setlocale(LC_NUMERIC, before.c_str());
}

TEST(StringText, EscapesWhatItMust) {
    std::string all;
    for (int byte = 1; byte < 256; ++byte) {
        all += static_cast<char>(byte);
    }
    JsonNode node{};
    node.type = JSON_KIND_STRING;
    node.valuestring = all.data();
    std::string expected =
        "\"\\u0001\\u0002\\u0003\\u0004\\u0005\\u0006\\u0007\\b\\t\\n\\u000b\\f\\r\\u000e\\u000f"
        "\\u0010\\u0011\\u0012\\u0013\\u0014\\u0015\\u0016\\u0017\\u0018\\u0019\\u001a\\u001b\\u001"
        "c"
        "\\u001d\\u001e\\u001f "
        "!\\\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\\\]^_"
        "`abcdefghijklmnopqrstuvwxyz{|}~\x7f";
    for (int byte = 128; byte < 256; ++byte) {
        expected += static_cast<char>(byte);
    }
    expected += "\"";
    EXPECT_EQ(plain(&node), expected);
    EXPECT_EQ(formatted(&node), expected);

    OwnedJson object(createJsonObject());
    addJsonBoolToObject(object.get(), all.c_str(), 0);
    EXPECT_EQ(plain(object), "{" + expected + ":false}");
}

TEST(Print, FormatsWithTabsAndNewlines) {
    const OwnedJson document = parsed(
        R"({"s":"x","n":null,"t":true,"f":false,"o":{"e":{},"a":[1,[2,"y"],{"k":3}],"z":[]},"i":4})");
    EXPECT_EQ(formatted(document),
              "{\n"
              "\t\"s\":\t\"x\",\n"
              "\t\"n\":\tnull,\n"
              "\t\"t\":\ttrue,\n"
              "\t\"f\":\tfalse,\n"
              "\t\"o\":\t{\n"
              "\t\t\"e\":\t{\n"
              "\t\t},\n"
              "\t\t\"a\":\t[1, [2, \"y\"], {\n"
              "\t\t\t\t\"k\":\t3\n"
              "\t\t\t}],\n"
              "\t\t\"z\":\t[]\n"
              "\t},\n"
              "\t\"i\":\t4\n"
              "}");
}

TEST(Print, TakesANodeWithoutNameAndSiblings) {
    const OwnedJson document = parsed(R"({"a":[1],"b":{"c":2},"d":3})");
    EXPECT_EQ(plain(member(document, "a")), "[1]");
    EXPECT_EQ(formatted(member(document, "b")), "{\n\t\"c\":\t2\n}");
}

TEST(Print, NullAndUnknownKindsPrintAsNull) {
    JsonNode node{};
    EXPECT_EQ(printJson(nullptr), nullptr);
    EXPECT_EQ(printJsonUnformatted(nullptr), nullptr);
    for (const int kind : {9, 17, 99, 255}) {
        node.type = kind;
        EXPECT_EQ(printJson(&node), nullptr) << kind;
    }
}

TEST(Print, MissingTextsAndNamesPrintAsEmpty) {
    OwnedJson object(createJsonObject());
    addJsonItemToArray(object.get(), createJsonArray());
    addJsonStringToObject(object.get(), "s", "x");
    std::free(member(object, "s")->valuestring);
    member(object, "s")->valuestring = nullptr;
    EXPECT_EQ(plain(object), R"({"":[],"s":""})");
}

TEST(Print, LeavesTheDocumentAlone) {
    const OwnedJson document = parsed(R"({"a":[1,{"b":"c"}]})");
    const std::string once = formatted(document);
    EXPECT_EQ(formatted(document), once);
    EXPECT_EQ(document->child->prev, nullptr);
    EXPECT_EQ(document->child->child->next->child->type, JSON_KIND_STRING);
}

TEST(Print, PrintsLongDocuments) {
    std::string text = "[";
    for (int i = 0; i < 100000; ++i) {
        text += "{\"id\":" + std::to_string(i) + ",\"name\":\"number " + std::to_string(i) + "\"},";
    }
    text.back() = ']';
    EXPECT_EQ(plain(parsed(text)), text);
    EXPECT_EQ(plain(parsed_uint64(text)), text);
    EXPECT_EQ(plain(parsed(formatted(parsed(text)))), text);
}

}  // namespace
