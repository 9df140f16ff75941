// Where a parse that fails says so, and the texts that are refused.
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "json_test.h"

namespace {

TEST(Parse, PointsAtTheOffendingByte) {
    const std::pair<const char *, std::ptrdiff_t> cases[] = {
        {"", 0},
        {"[truex]", 5},
        {"   ", 3},
        {"  x", 2},
        {"[1 2]", 3},
        {"[1,]", 3},
        {"[,1]", 1},
        {"[1,[}", 4},
        {"[1", 2},
        {"[", 1},
        {"{", 1},
        {"{\"a\"", 4},
        {"{\"a\" 1}", 5},
        {"{\"a\":}", 5},
        {"{\"a\":1 \"b\":2}", 7},
        {"{\"a\":1", 6},
        // In place of a key:
        {"{a:1}", 1},
        {"{1:2}", 1},
        {"{-:2}", 1},
        {"{ [}", 2},
        {"{\"a\":1,}", 7},
        {"{\"a\":1, x", 8},
        {"{\"a\":1,[}", 7},
        {"{\"a\":1,", 7},
        {"[{\"a\":[12.5, x]}]", 13},
        // In a string: a bad escape, and the beginning of one without an end.
        {R"(["ab\q"])", 4},
        {R"(["\q"])", 2},
        {R"({"\q":1})", 2},
        {R"(["ab\ud83d"])", 4},
        {R"(["ab\udc00"])", 4},
        {R"({"upload_url":"h\u_4tps://x"})", 16},
        {R"(["\u 123"])", 2},
        {R"(["\u+123"])", 2},
        {R"(["\u00g0"])", 2},
        {R"(["\\\u12"])", 4},
        {R"({"a\u12":34})", 3},
        {R"(["\ud83d\uDE0x"])", 2},
        {R"(["abc])", 2},
        {R"({"abc)", 2},
        {R"(["a\)", 2},
    };
    for (const auto &[text, offset] : cases) {
        EXPECT_EQ(error_offset(text), offset) << text;
    }
}

TEST(Parse, ErrorPositionOutlivesAnyNumberBefore) {
    const std::string numbers = "[123, -4.5e6, \"7\", 89";
    EXPECT_EQ(error_offset(numbers + "!]"), static_cast<std::ptrdiff_t>(numbers.size()));
    EXPECT_EQ(error_offset(numbers), static_cast<std::ptrdiff_t>(numbers.size()));
}

TEST(Parse, RefusesAByteOrderMark) {
    for (const char *rest : {"", "1", "{}", "[1,2,3]", "{\"a\":1}"}) {
        EXPECT_EQ(error_offset("\xEF\xBB\xBF" + std::string(rest)), 0) << rest;
        EXPECT_EQ(error_offset(" \xEF\xBB\xBF" + std::string(rest)), 1) << rest;
    }
}

std::string nested(std::size_t depth, const std::string &open, const std::string &close) {
    std::string text;
    for (std::size_t i = 0; i < depth; ++i) {
        text += open;
    }
    text += "1";
    for (std::size_t i = 0; i < depth; ++i) {
        text += close;
    }
    return text;
}

TEST(Parse, RefusesNestingDeeperThan1000) {
    EXPECT_EQ(plain(parsed(nested(1000, "[", "]"))), nested(1000, "[", "]"));
    EXPECT_EQ(plain(parsed(nested(1000, "{\"a\":", "}"))), nested(1000, "{\"a\":", "}"));
    EXPECT_EQ(error_offset(nested(1001, "[", "]")), 1000);
    EXPECT_EQ(error_offset(nested(1001, "{\"a\":", "}")), 5000);
    EXPECT_EQ(error_offset(nested(100000, "[", "]")), 1000);
    EXPECT_EQ(error_offset(std::string(100000, '[')), 1000);
    EXPECT_EQ(error_offset(std::string(100000, '{')), 1);
}

TEST(Parse, EndsAtTheFirstNulByte) {
    EXPECT_EQ(error_offset(std::string("[1,\0 2]", 7)), 3);
    EXPECT_EQ(error_offset(std::string("[\"a\0b\"]", 7)), 2);
    EXPECT_EQ(plain(parsed(std::string("[1]\0]", 5))), "[1]");
}

// Behind the text lies memory that cannot be read.
TEST(Parse, NeverReadsBehindTheText) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    void *const pages =
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    char *const end = static_cast<char *>(pages) + page;
    ASSERT_EQ(mprotect(end, page, PROT_NONE), 0);
    for (const std::string text :
         {"", " ", "\"", "\"\\", "\"\\u12", "[-", "1.", "1e+", "{\"a\":"}) {
        char *const at = end - text.size() - 1;
        std::strcpy(at, text.c_str());
        deleteJson(parseJsonText(at));
        deleteJson(parseJsonTextLongLongUint(at));
    }
    munmap(pages, 2 * page);
}

TEST(Parse, NullTextIsNoDocument) {
    EXPECT_EQ(parseJsonText(nullptr), nullptr);
    EXPECT_EQ(parseJsonTextLongLongUint(nullptr), nullptr);
}

}  // namespace
