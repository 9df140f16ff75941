// Giving the turn back.
#include <unistd.h>

#include <filesystem>

#include "testing/descriptors.h"
#include "testing/spawn.h"
#include "turn_test.h"

namespace {

using testing::ElementsAre;

class TurnRelease : public TurnTest {
  protected:
    TurnRelease() { g_turn_held = 1; }
};

TEST_F(TurnRelease, EmptiesTheFileAndLogsNothing) {
    for (const std::string content : {"cloud", "zorbcon", "other\n", ""}) {
        hold(content);
        g_turn_held = 1;
        EXPECT_EQ(api_release_cloudwtpflag(), 0);
        EXPECT_EQ(held(), "");
        EXPECT_EQ(g_turn_held, 0);
    }
    EXPECT_EQ(logged(), "");
}

TEST_F(TurnRelease, CreatesAMissingFile) {
    EXPECT_EQ(api_release_cloudwtpflag(), 0);
    EXPECT_EQ(held(), "");
    EXPECT_EQ(g_turn_held, 0);
}

TEST_F(TurnRelease, MakesRoomForTheNextClaim) {
    EXPECT_EQ(api_get_cloudwtpflag(), 0);
    EXPECT_EQ(api_release_cloudwtpflag(), 0);
    console.clear();
    EXPECT_EQ(api_get_cloudwtpflag(), 0);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(logged(), "api_get_cloudwtpflag OK 499\n\n");
}

TEST_F(TurnRelease, EmptiesUnderTheLock) {
    const long before = open_descriptors();
    hold("cloud");
    api_release_cloudwtpflag();
    EXPECT_THAT(lock_calls, ElementsAre(LockCall{LOCK_EX, "cloud"}, LockCall{LOCK_UN, ""}));
    EXPECT_TRUE(is_unlocked());
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(TurnRelease, FileThatCannotBeOpened) {
    std::filesystem::create_directory(kTurnFile);
    EXPECT_EQ(api_release_cloudwtpflag(), -1);
    EXPECT_EQ(g_turn_held, 1);
    EXPECT_EQ(logged(), "");
}

TEST_F(TurnRelease, FailedLockLeavesTheFileAlone) {
    hold("cloud");
    const long before = open_descriptors();
    let_locks_fail();
    EXPECT_EQ(api_release_cloudwtpflag(), -1);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(g_turn_held, 1);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(logged(), "");
}

TEST_F(TurnRelease, DescriptorZeroCountsAsNotOpened) {
    hold("cloud");
    const int result = world::run_apart([this] {
        close(STDIN_FILENO);
        return api_release_cloudwtpflag() == -1 && g_turn_held == 1 && lock_calls.empty() &&
                       fcntl(STDIN_FILENO, F_GETFD) >= 0
                   ? 0
                   : 1;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(logged(), "");
}

}  // namespace
