// Text in a buffer of fixed size.
#include "base/fixed_text.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using cloudagent::FixedText;

namespace {

using Text = FixedText<8>;

TEST(FixedText, IsEmptyAtFirst) {
    const Text text;
    EXPECT_STREQ(text.c_str(), "");
    EXPECT_EQ(text.length(), 0u);
    EXPECT_EQ(Text::size(), 8u);
}

TEST(FixedText, HoldsOneCharacterLessThanItsSize) {
    Text text;
    text.format("%s", "1234567");
    EXPECT_STREQ(text.c_str(), "1234567");
    text.format("%d-%s", 12, "345678");
    EXPECT_STREQ(text.c_str(), "12-3456");
}

TEST(FixedText, AppendsUntilItIsFull) {
    Text text;
    text.append("%s", "123");
    text.append("%s", "45");
    EXPECT_STREQ(text.c_str(), "12345");
    text.append("%s", "6789");
    EXPECT_STREQ(text.c_str(), "1234567");
    text.append("%s", "8");
    EXPECT_STREQ(text.c_str(), "1234567");
    text.format("%s", "");
    EXPECT_EQ(text.length(), 0u);
}

// No character of this locale stands for that number, which printing reports after the "ab".
TEST(FixedText, TakesNothingOfWhatCannotBePrinted) {
    const wchar_t none[] = {0x110000, 0};
    Text text;
    text.format("%s", "12345");
    text.append("ab%ls", none);
    EXPECT_STREQ(text.c_str(), "12345");
    text.format("ab%ls", none);
    EXPECT_STREQ(text.c_str(), "");
}

}  // namespace
