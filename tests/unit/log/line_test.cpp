// The layout of a line.
#include <limits>

#include "log_test.h"
#include "testing/failing_memory.h"

namespace {

class LogLine : public LogTest {};

TEST_F(LogLine, IsTheLocalTimeInBracketsAndTheMessage) {
    const struct {
        const char *zone;  // the variable alone
        std::time_t now;
        std::string stamp;
    } rows[] = {
        {"UTC0", now, kStamp},
        {"EAST-5:30", now, "[Mon Nov 16 12:27:51 2026]"},
        {"UTC0", 0, "[Thu Jan  1 00:00:00 1970]"},
        {"UTC0", static_cast<std::time_t>(int64_t{INT32_MAX} + 1), "[Tue Jan 19 03:14:08 2038]"},
        {"UTC0", std::numeric_limits<std::time_t>::max(), "[]"},  // beyond the calendar
    };
    for (const auto &row : rows) {
        setenv("TZ", row.zone, 1);
        now = row.now;
        cloud_log("%s %d %s\n\n", "main", 900, "segmentrace");
        EXPECT_EQ(console.text(), row.stamp + "main 900 segmentrace\n\n");
        console.clear();
    }
}

TEST_F(LogLine, AsksForTheTimeOncePerLine) {
    log_to_file();
    cloud_log("x\n");
    cloud_log("y\n");
    EXPECT_EQ(clock_calls, 2);
}

TEST_F(LogLine, IsNeverCutAndGetsNoLineEndOfItsOwn) {
    log_to_file();
    std::string expected;
    for (const size_t length : {0u, 1u, 30u, 31u, 32u, 33u, 127u, 128u, 4096u, 70000u, 1u << 20}) {
        const std::string message = std::string(length, 'm') + (length == 1 ? "" : "\n");
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

// The C locale has no bytes for the character of the first line.
TEST_F(LogLine, IsDroppedWhenItCannotBeFormattedOrAllocated) {
    log_to_file();
    cloud_log("%ls\n", L"\u20AC");
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
