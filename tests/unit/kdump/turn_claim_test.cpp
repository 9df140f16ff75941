// Claiming the turn.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "testing/descriptors.h"
#include "testing/spawn.h"
#include "turn_test.h"

namespace {

using testing::ElementsAre;

class TurnClaim : public TurnTest {};

std::string ok_line(int site) { return "api_get_cloudwtpflag OK " + std::to_string(site) + "\n\n"; }

std::string refusal(const std::string &content) {
    return "api_get_cloudwtpflag not my turn, buf \"" + content +
           "\" func api_get_cloudwtpflag line 516\n\n";
}

TEST_F(TurnClaim, WritesTheWordIntoANewFile) {
    const mode_t mask = umask(0);
    EXPECT_EQ(api_get_cloudwtpflag(), 0);
    umask(mask);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(g_turn_held, 1);
    EXPECT_EQ(logged(), ok_line(499));
    EXPECT_EQ(std::filesystem::status(kTurnFile).permissions(), std::filesystem::perms{0644});
}

TEST_F(TurnClaim, WritesTheWordIntoAnEmptyFile) {
    hold("");
    EXPECT_EQ(api_get_cloudwtpflag(), 0);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(g_turn_held, 1);
    EXPECT_EQ(logged(), ok_line(499));
}

TEST_F(TurnClaim, IsConfirmedByEitherTurnWord) {
    const std::pair<std::string, int> rows[] = {
        {"cloud", 504}, {"zorbcon", 510}, {std::string("cloud\0other", 11), 504}};
    for (const auto &[content, site] : rows) {
        g_turn_held = 0;
        hold(content);
        EXPECT_EQ(api_get_cloudwtpflag(), 0);
        EXPECT_EQ(held(), content);
        EXPECT_EQ(g_turn_held, 1);
        EXPECT_EQ(logged(), ok_line(site));
    }
}

TEST_F(TurnClaim, IsRefusedByAnyOtherContent) {
    for (const std::string content : {"cloud\n", "zorbcon\n", "Cloud", "clou", "clouds", " cloud",
                                      "zorb", "other", "\n", "%s%d"}) {
        for (const int before : {0, 1}) {
            g_turn_held = before;
            hold(content);
            EXPECT_EQ(api_get_cloudwtpflag(), -1);
            EXPECT_EQ(held(), content);
            EXPECT_EQ(g_turn_held, before);
            EXPECT_EQ(logged(), refusal(content));
        }
    }
}

TEST_F(TurnClaim, ReadsNoMoreThan128Bytes) {
    for (const size_t length : {127u, 128u, 129u, 1u << 20}) {
        hold(std::string(length, 'x'));
        EXPECT_EQ(api_get_cloudwtpflag(), -1);
        EXPECT_EQ(logged(), refusal(std::string(std::min(length, size_t{128}), 'x')));
        EXPECT_EQ(std::filesystem::file_size(kTurnFile), length);
    }
}

// Memory of this process at address zero opens but cannot be read.
TEST_F(TurnClaim, FailedReadIsRefused) {
    std::filesystem::create_symlink("/proc/self/mem", kTurnFile);
    do_not_note_locks();
    EXPECT_EQ(api_get_cloudwtpflag(), -1);
    EXPECT_EQ(logged(), refusal(""));
    EXPECT_EQ(g_turn_held, 0);
}

// A failed opening shows up at the lock.
TEST_F(TurnClaim, FileThatCannotBeOpened) {
    std::filesystem::create_directory(kTurnFile);
    g_turn_held = 1;
    EXPECT_EQ(api_get_cloudwtpflag(), -1);
    EXPECT_EQ(logged(), "api_get_cloudwtpflag flock failed\n\n");
    EXPECT_EQ(g_turn_held, 1);
}

TEST_F(TurnClaim, FailedLockLeavesTheFileAlone) {
    const long before = open_descriptors();
    let_locks_fail();
    EXPECT_EQ(api_get_cloudwtpflag(), -1);
    EXPECT_EQ(logged(), "api_get_cloudwtpflag flock failed\n\n");
    EXPECT_EQ(held(), "");
    EXPECT_EQ(g_turn_held, 0);
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(lock_calls.size(), 1u) << "what was not locked is not unlocked";
}

// A program that runs without standard input gets descriptor 0 for the turn file.
TEST_F(TurnClaim, DescriptorZeroCountsAsNotOpened) {
    const int result = world::run_apart([this] {
        close(STDIN_FILENO);
        g_turn_held = 1;
        const int claim = api_get_cloudwtpflag();
        const bool stays_open = fcntl(STDIN_FILENO, F_GETFD) >= 0;
        return claim == -1 && g_turn_held == 1 && lock_calls.empty() && stays_open ? 0 : 1;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(logged(), "api_get_cloudwtpflag fd == NULL\n\n");
    EXPECT_EQ(held(), "");
}

TEST_F(TurnClaim, LooksAndWritesUnderTheLock) {
    api_get_cloudwtpflag();
    EXPECT_THAT(lock_calls, ElementsAre(LockCall{LOCK_EX, ""}, LockCall{LOCK_UN, "cloud"}));
    EXPECT_TRUE(is_unlocked());
}

TEST_F(TurnClaim, GivesTheLockBackAndClosesTheFile) {
    const long before = open_descriptors();
    for (const std::string content : {"", "cloud", "zorbcon", "other"}) {
        hold(content);
        lock_calls.clear();
        api_get_cloudwtpflag();
        EXPECT_EQ(lock_calls.size(), 2u);
        EXPECT_EQ(lock_calls.back().operation, LOCK_UN);
        EXPECT_TRUE(is_unlocked());
        EXPECT_EQ(open_descriptors(), before);
    }
}

}  // namespace
