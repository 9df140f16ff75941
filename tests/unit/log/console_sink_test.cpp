// How a line reaches /dev/console.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <vector>

#include "log_test.h"
#include "testing/stdout_of.h"

namespace {

bool is_console(int file) {
    struct stat open_file;
    struct stat console;
    return fstat(file, &open_file) == 0 && stat("/dev/console", &console) == 0 &&
           open_file.st_ino == console.st_ino && open_file.st_dev == console.st_dev;
}

// Puts another file, or none, at the console's place.
class ConsoleReplaced {
  public:
    ConsoleReplaced() { std::filesystem::rename("/dev/console", "/dev/console.aside"); }
    ~ConsoleReplaced() { std::filesystem::rename("/dev/console.aside", "/dev/console"); }
};

class ConsoleSink : public LogTest {
  protected:
    ConsoleSink() {
        calls::seen<::write>() = [this](int file, const void *, size_t size) {
            if (is_console(file)) {
                console_writes.push_back(size);
            }
        };
    }
    ~ConsoleSink() override { calls::seen<::write>() = nullptr; }

    std::vector<size_t> console_writes;
};

TEST_F(ConsoleSink, TakesEachLineInOneWrite) {
    cloud_log("main %d\n", 900);
    cloud_log("%s", std::string(100000, 'x').c_str());
    EXPECT_EQ(console_writes, (std::vector<size_t>{kStamp.size() + 9, kStamp.size() + 100000}));
}

TEST_F(ConsoleSink, ShowsPercentSignsLiterally) {
    cloud_log("%s\n", "%d %s %n 100%");
    EXPECT_EQ(logged(), "%d %s %n 100%\n");
}

TEST_F(ConsoleSink, IsOpenedAnewForEachLineWithoutAppending) {
    const ConsoleReplaced replaced;
    world::write_file("/dev/console", std::string(40, '.'));
    cloud_log("one");
    cloud_log("two");
    EXPECT_EQ(world::read_file("/dev/console"),
              kStamp + "two" + std::string(40 - kStamp.size() - 3, '.'));
    std::filesystem::remove("/dev/console");
}

TEST_F(ConsoleSink, IsNotCreated) {
    log_to_file();
    {
        const ConsoleReplaced replaced;
        cloud_log("lost\n");
        EXPECT_FALSE(world::exists("/dev/console"));
    }
    cloud_log("seen\n");
    EXPECT_EQ(logged(), "seen\n");
    EXPECT_EQ(world::read_file(kLogFile), kStamp + "lost\n" + kStamp + "seen\n");
}

TEST_F(ConsoleSink, FailedWriteIsNotReported) {
    const ConsoleReplaced replaced;
    std::filesystem::create_symlink("/dev/full", "/dev/console");
    EXPECT_EQ(stdout_of([] { cloud_log("lost\n"); }), "");
    std::filesystem::remove("/dev/console");
}

}  // namespace
