// Which sinks get a line.
#include <filesystem>

#include "log_test.h"
#include "testing/descriptors.h"
#include "testing/open_watch.h"

namespace {

class LogSwitches : public LogTest {
  protected:
    static void set(uint32_t to_console, uint32_t to_file) {
        log_to_file();
        g_console_debug = to_console;
        g_file_log = to_file;
    }
};

// Taken before any test runs.
const bool off_at_start = g_console_debug == 0 && g_file_log == 0 && g_log_path[0] == '\0';

TEST_F(LogSwitches, AreOffAtStart) {
    EXPECT_TRUE(off_at_start);
    EXPECT_EQ(sizeof g_log_path, 128u);
}

// An address that cannot be read would end the program if anything was formatted.
TEST_F(LogSwitches, BothOffNothingHappens) {
    set(0, 0);
    const OpenWatch opened("/tmp");
    cloud_log("%s\n", reinterpret_cast<const char *>(16));
    EXPECT_EQ(clock_calls, 0);
    EXPECT_EQ(console.text(), "");
    EXPECT_THAT(opened.seen(), testing::IsEmpty());
}

TEST_F(LogSwitches, EachSinkHasItsOwnAndAnyValueButZeroIsOn) {
    const long before = open_descriptors();
    for (const uint32_t on : {1u, 2u, 3u, 256u, 0x80000000u}) {
        for (const auto &[to_console, to_file] : {std::pair(on, 0u), {0u, on}, {on, on}}) {
            set(to_console, to_file);
            cloud_log("line\n");
            EXPECT_EQ(console.text(), to_console != 0 ? kStamp + "line\n" : "") << on;
            EXPECT_EQ(world::read_file_if_any(kLogFile), to_file != 0 ? kStamp + "line\n" : "")
                << on;
            EXPECT_EQ(world::exists(kLogFile), to_file != 0);
            console.clear();
            std::filesystem::remove(kLogFile);
        }
    }
    EXPECT_EQ(open_descriptors(), before);
}

// The file's line has been formatted once more, which tells the two apart.
TEST_F(LogSwitches, TheConsoleComesFirst) {
    log_to_file("/dev/console");
    cloud_log("%s\n", "100%%");
    EXPECT_EQ(console.text(), kStamp + "100%%\n" + kStamp + "100%\n");
}

}  // namespace
