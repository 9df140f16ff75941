// Which sinks get a line.
#include "log_test.h"
#include "state/state_files.h"
#include "testing/descriptors.h"
#include "testing/named_row.h"
#include "testing/open_watch.h"
#include "testing/paths.h"

namespace {

class LogSwitches : public LogTest {};

// Taken before any test runs.
const bool off_at_start = g_console_debug == 0 && g_file_log == 0 && g_log_path[0] == '\0';

TEST_F(LogSwitches, AreOffAtStart) {
    EXPECT_TRUE(off_at_start);
    EXPECT_EQ(sizeof g_log_path, 128u);
}

// An address that cannot be read would end the program if anything was formatted.
TEST_F(LogSwitches, BothOffNothingHappens) {
    g_console_debug = 0;
    std::snprintf(g_log_path, sizeof g_log_path, "%s", kLogFile.c_str());
    const OpenWatch opened("/tmp");
    cloud_log("%s\n", reinterpret_cast<const char *>(16));
    EXPECT_EQ(clock_calls, 0);
    EXPECT_EQ(console.text(), "");
    EXPECT_THAT(opened.seen(), testing::IsEmpty());
}

TEST_F(LogSwitches, ConsoleOnly) {
    std::snprintf(g_log_path, sizeof g_log_path, "%s", kLogFile.c_str());
    cloud_log("line\n");
    EXPECT_EQ(logged(), "line\n");
    EXPECT_FALSE(world::exists(kLogFile));
}

// The file's line has been formatted once more, which tells the two apart.
TEST_F(LogSwitches, TheConsoleComesFirst) {
    log_to_file("/dev/console");
    cloud_log("%s\n", "100%%");
    EXPECT_EQ(console.text(), kStamp + "100%%\n" + kStamp + "100%\n");
}

TEST_F(LogSwitches, FileOnly) {
    g_console_debug = 0;
    log_to_file();
    cloud_log("line\n");
    EXPECT_EQ(console.text(), "");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "line\n");
}

TEST_F(LogSwitches, BothSinks) {
    log_to_file();
    cloud_log("line\n");
    EXPECT_EQ(console.text(), kStamp + "line\n");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "line\n");
}

TEST_F(LogSwitches, AnyValueButZeroIsOn) {
    for (const uint32_t value : {1u, 2u, 3u, 256u, 0x80000000u}) {
        g_console_debug = value;
        g_file_log = value;
        std::snprintf(g_log_path, sizeof g_log_path, "%s%u", kLogFile.c_str(), value);
        cloud_log("line\n");
        EXPECT_EQ(logged(), "line\n") << value;
        EXPECT_EQ(world::read_file(g_log_path), kStamp + "line\n") << value;
    }
}

TEST_F(LogSwitches, NothingStaysOpen) {
    log_to_file();
    const long before = open_descriptors();
    for (int i = 0; i < 10; ++i) {
        cloud_log("line\n");
    }
    EXPECT_EQ(open_descriptors(), before);
}

struct DebugSetting : NamedRow {
    const char *content;  // null: no file
    bool on;
};

class ConsoleDebugSetting : public LogTest, public testing::WithParamInterface<DebugSetting> {};

TEST_P(ConsoleDebugSetting, SwitchesTheConsole) {
    if (GetParam().content != nullptr) {
        world::write_file(kSettings + "cloud_debug", GetParam().content);
    }
    g_console_debug = 0;
    api_cloud_debug_get(&g_console_debug);
    cloud_log("line\n");
    EXPECT_EQ(logged(), GetParam().on ? "line\n" : "");
}

INSTANTIATE_TEST_SUITE_P(
    Each, ConsoleDebugSetting,
    testing::Values(DebugSetting{"zero", "0", false}, DebugSetting{"one", "1", true},
                    DebugSetting{"two", "2", true}, DebugSetting{"three", "3", false},
                    DebugSetting{"seven", "7", false}, DebugSetting{"no_number", "on", false},
                    DebugSetting{"empty", "", false}, DebugSetting{"missing", nullptr, false}),
    RowName());

}  // namespace
