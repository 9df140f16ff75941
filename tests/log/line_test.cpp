// What a line looks like.
#include <limits>

#include "log_test.h"
#include "tests/support/children.h"
#include "tests/support/no_memory.h"

namespace {

class LogLine : public LogTest {};

TEST_F(LogLine, IsTheLocalTimeInBracketsAndTheMessage) {
    cloud_log("%s %d %s\n\n", "main", 900, "segmentrace");
    EXPECT_EQ(console.text(), "[Mon Nov 16 06:57:51 2026]main 900 segmentrace\n\n");
}

TEST_F(LogLine, FollowsTheLocalZone) {
    cloud_log("x\n");
    EXPECT_EQ(console.text(), "[Mon Nov 16 06:57:51 2026]x\n");
    setenv("TZ", "EAST-5:30", 1);  // the variable alone
    cloud_log("x\n");
    EXPECT_THAT(console.text(), testing::EndsWith("[Mon Nov 16 12:27:51 2026]x\n"));
}

TEST_F(LogLine, PadsTheDayOfTheMonth) {
    test_clock::now = 0;
    cloud_log("x\n");
    EXPECT_EQ(console.text(), "[Thu Jan  1 00:00:00 1970]x\n");
}

TEST_F(LogLine, KnowsTheTimeAfter2038) {
    test_clock::now = static_cast<std::time_t>(int64_t{INT32_MAX} + 1);
    cloud_log("x\n");
    EXPECT_EQ(console.text(), "[Tue Jan 19 03:14:08 2038]x\n");
}

TEST_F(LogLine, AsksForTheTimeOncePerLine) {
    log_to_file();
    cloud_log("x\n");
    cloud_log("y\n");
    EXPECT_EQ(test_clock::calls, 2);
}

TEST_F(LogLine, GetsNoLineEndOfItsOwn) {
    cloud_log("a");
    cloud_log("b\n\n");
    EXPECT_EQ(console.text(), kStamp + "a" + kStamp + "b\n\n");
}

TEST_F(LogLine, IsNeverCut) {
    log_to_file();
    std::string expected;
    for (const size_t length : {0u, 1u, 30u, 31u, 32u, 33u, 127u, 128u, 4096u, 70000u, 1u << 20}) {
        const std::string message = std::string(length, 'm') + "\n";
        cloud_log("%s", message.c_str());
        expected += kStamp + message;
    }
    EXPECT_EQ(console.text(), expected);
    EXPECT_EQ(world::read_file(kLogFile), expected);
}

TEST_F(LogLine, ShowsANullText) {
    const char *volatile none = nullptr;
    const char *const text = none;
    cloud_log("%s %d KDUMPS_url %s\n", "start_processing", 578, text);
    EXPECT_EQ(logged(), "start_processing 578 KDUMPS_url (null)\n");
}

TEST_F(LogLine, TimeBeyondTheCalendarDoesNoHarm) {
    test_clock::now = std::numeric_limits<std::time_t>::max();
    cloud_log("message\n");
    EXPECT_EQ(console.text(), "[]message\n");
}

// The C locale has no bytes for this character, so there is no line.
TEST_F(LogLine, IsDroppedWhenItCannotBeFormatted) {
    log_to_file();
    cloud_log("%ls\n", L"\u20AC");
    cloud_log("next\n");
    EXPECT_EQ(logged(), "next\n");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "next\n");
}

TEST_F(LogLine, IsDroppedWhenOutOfMemory) {
    if (!kMemoryCanBeLimited) {
        GTEST_SKIP() << "not under this sanitizer";
    }
    log_to_file();
    const std::string message(64 << 20, 'm');
    constexpr int kNoLimit = 1;
    const int result = run_apart([&] {
        if (!limit_memory(16 << 20)) {
            return kNoLimit;
        }
        cloud_log("%s", message.c_str());
        cloud_log("next\n");
        return 0;
    });
    if (result == kNoLimit) {
        GTEST_SKIP() << "memory cannot be limited here";
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(logged(), "next\n");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "next\n");
}

}  // namespace
