// How a line reaches the log file, and what is said when it does not.
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

TEST_F(FileSink, Appends) {
    world::write_file(kLogFile, "before\n");
    cloud_log("one\n");
    cloud_log("two\n");
    EXPECT_EQ(world::read_file(kLogFile), "before\n" + kStamp + "one\n" + kStamp + "two\n");
}

TEST_F(FileSink, OpensAndClosesTheFileForEachLine) {
    world::write_file(kLogFile, "");
    const OpenWatch opened("/tmp");
    cloud_log("one\n");
    cloud_log("two\n");
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open agent.log", "written agent.log",
                                                    "open agent.log", "written agent.log"));
}

TEST_F(FileSink, SaysNothingOnSuccess) {
    EXPECT_EQ(stdout_of([] { cloud_log("fine\n"); }), "");
}

TEST_F(FileSink, TakesALongPath) {
    const std::string path = "/tmp/" + std::string(sizeof g_log_path - 6, 'p');
    log_to_file(path);
    ASSERT_EQ(path.size(), sizeof g_log_path - 1);
    cloud_log("line\n");
    EXPECT_EQ(world::read_file(path), kStamp + "line\n");
}

struct UnusablePath {
    const char *what;
    const char *path;
};

TEST_F(FileSink, ReportsAFileThatCannotBeOpened) {
    const UnusablePath rows[] = {
        {"missing folder", "/tmp/none/agent.log"},
        {"a folder", "/tmp/app"},
        {"no path", ""},
        {"a path that looks like a format", "/tmp/none/%s%n"},
    };
    for (const UnusablePath &row : rows) {
        SCOPED_TRACE(row.what);
        log_to_file(row.path);
        EXPECT_EQ(stdout_of([] { cloud_log("lost %s\n", "100%d"); }), report_for("lost 100%d\n"));
        EXPECT_EQ(logged(), "lost 100%d\n");
    }
    EXPECT_FALSE(world::exists("/tmp/none"));
}

// A short line fails when the buffer is flushed, a long one while it is printed.
TEST_F(FileSink, ReportsAFullDevice) {
    log_to_file("/dev/full");
    for (const size_t length : {1u, 1u << 20}) {
        const std::string line(length, 'l');
        EXPECT_EQ(stdout_of([&] { cloud_log("%s", line.c_str()); }), report_for(line)) << length;
    }
}

TEST_F(FileSink, ClosesTheFileAfterAFailure) {
    log_to_file("/dev/full");
    const long before = open_descriptors();
    for (int i = 0; i < 10; ++i) {
        stdout_of([] { cloud_log("lost\n"); });
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
