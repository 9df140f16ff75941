// Numbers read as doubles.
#include <climits>
#include <cmath>

#include "json_test.h"

namespace {

struct NumberCase {
    const char *text;
    double value;
    int truncated;
};

TEST(Parse, ReadsNumbers) {
    const NumberCase cases[] = {
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
    for (const NumberCase &row : cases) {
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

TEST(Parse, ReadsNumbersInDocumentOrder) {
    const char *text = R"({"1":-2,"x\"3":[4,"5",{"-6":7.5}],"8":"\\","9":10e1})";
    EXPECT_EQ(plain(parsed(text)), R"({"1":-2,"x\"3":[4,"5",{"-6":7.5}],"8":"\\","9":100})");
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

}  // namespace
