// How a line reaches the log file, and what reports a line that did not get there.
#include <filesystem>

#include "log_test.h"
#include "testing/descriptors.h"
#include "testing/open_watch.h"
#include "testing/stdout_of.h"

namespace {

class FileSink : public LogTest {
  protected:
    FileSink() { log_to_file(); }
};

TEST_F(FileSink, AppendsAndOpensTheFileForEachLine) {
    world::write_file(kLogFile, "before\n");
    const OpenWatch opened("/tmp");
    EXPECT_EQ(stdout_of([] {
                  cloud_log("one\n");
                  cloud_log("two\n");
              }),
              "");
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open agent.log", "written agent.log",
                                                    "open agent.log", "written agent.log"));
    EXPECT_EQ(world::read_file(kLogFile), "before\n" + kStamp + "one\n" + kStamp + "two\n");
}

TEST_F(FileSink, TakesALongPath) {
    const std::string path = "/tmp/" + std::string(sizeof g_log_path - 6, 'p');
    log_to_file(path);
    ASSERT_EQ(path.size(), sizeof g_log_path - 1);
    cloud_log("line\n");
    EXPECT_EQ(world::read_file(path), kStamp + "line\n");
}

TEST_F(FileSink, ReportsAFileThatCannotBeOpened) {
    // A missing folder, a folder, no path, a path that looks like a format.
    for (const char *path : {"/tmp/none/agent.log", "/tmp/app", "", "/tmp/none/%s%n"}) {
        SCOPED_TRACE(path);
        log_to_file(path);
        EXPECT_EQ(stdout_of([] { cloud_log("lost %s\n", "100%d"); }), report_for("lost 100%d\n"));
        EXPECT_EQ(logged(), "lost 100%d\n");
    }
    EXPECT_FALSE(world::exists("/tmp/none"));
}

// A short line fails when the buffer is flushed, a long one while it is printed.
TEST_F(FileSink, ReportsAFullDeviceAndStaysClosed) {
    log_to_file("/dev/full");
    const long before = open_descriptors();
    for (const size_t length : {1u, 1u << 20}) {
        const std::string line(length, 'l');
        EXPECT_EQ(stdout_of([&] { cloud_log("%s", line.c_str()); }), report_for(line)) << length;
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(FileSink, GoesOnAfterAFailure) {
    log_to_file("/tmp/later/agent.log");
    EXPECT_NE(stdout_of([] { cloud_log("lost\n"); }), "");
    std::filesystem::create_directory("/tmp/later");
    cloud_log("kept\n");
    EXPECT_EQ(world::read_file(g_log_path), kStamp + "kept\n");
}

}  // namespace
