#include "testing/console.h"

#include <fcntl.h>
#include <unistd.h>

#include "testing/world_test.h"

namespace {

class ConsoleTest : public world::WorldTest {
  protected:
    static void put(const std::string &line) {
        const int device = open("/dev/console", O_WRONLY);
        ASSERT_EQ(write(device, line.data(), line.size()), static_cast<ssize_t>(line.size()));
        close(device);
    }
};

TEST_F(ConsoleTest, KeepsEveryLineInOrder) {
    put("one\n");
    put("two\n");
    EXPECT_EQ(console.text(), "one\ntwo\n");
    console.clear();
    put("three\n");
    EXPECT_EQ(console.text(), "three\n");
}

TEST_F(ConsoleTest, CutsStampsAndNothingElse) {
    put("[Mon Nov 16 06:57:51 2026]main 900 segmentrace\n\n");
    put("[Sun Feb  1 06:57:51 2026]\n[not a stamp] x\n");
    EXPECT_EQ(console.text_without_stamps(), "main 900 segmentrace\n\n\n[not a stamp] x\n");
}

TEST_F(ConsoleTest, TakesMoreThanAPipeHolds) {
    const std::string line(100000, 'x');
    for (int i = 0; i < 50; ++i)
        put(line);
    EXPECT_EQ(console.text().size(), line.size() * 50);
}

}  // namespace
