// The layout of a line.
#include <limits>

#include "log_test.h"
#include "testing/failing_memory.h"

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
    now = 0;
    cloud_log("x\n");
    EXPECT_EQ(console.text(), "[Thu Jan  1 00:00:00 1970]x\n");
}

TEST_F(LogLine, KnowsTheTimeAfter2038) {
    now = static_cast<std::time_t>(int64_t{INT32_MAX} + 1);
    cloud_log("x\n");
    EXPECT_EQ(console.text(), "[Tue Jan 19 03:14:08 2038]x\n");
}

TEST_F(LogLine, AsksForTheTimeOncePerLine) {
    log_to_file();
    cloud_log("x\n");
    cloud_log("y\n");
    EXPECT_EQ(clock_calls, 2);
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
    now = std::numeric_limits<std::time_t>::max();
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
    log_to_file();
    {
        const MemoryWatch watch(1);
        cloud_log("%s\n", "lost");
        EXPECT_EQ(memory_failed(), 1u);
    }
    cloud_log("next\n");
    EXPECT_EQ(logged(), "next\n");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "next\n");
}

}  // namespace
