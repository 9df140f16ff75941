// Claiming the turn and giving it back.
#include "kdump/turn_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "testing/descriptors.h"
#include "testing/logged_test.h"
#include "testing/named_row.h"
#include "testing/paths.h"
#include "testing/spawn.h"

namespace {

// Notes each call of flock() with what the turn file holds at that moment.
class TurnTest : public LoggedTest {
  protected:
    TurnTest() {
        calls::seen<flock>() = [this](int, int operation) {
            const bool readable = std::filesystem::is_regular_file(kTurnFile);
            lock_calls.push_back((operation == LOCK_EX ? "lock at " : "unlock at ") +
                                 (readable ? held() : ""));
        };
        g_turn_held = 0;
    }
    ~TurnTest() override {
        do_not_note_locks();
        calls::answer<flock>() = nullptr;
    }

    static void do_not_note_locks() { calls::seen<flock>() = nullptr; }

    static void hold(const std::string &content) { world::write_file(kTurnFile, content); }
    static std::string held() { return world::read_file(kTurnFile); }

    void expect_given_back() {
        EXPECT_EQ(open_descriptors(), descriptors_before);
        const int file = open(kTurnFile.c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_EQ(syscall(SYS_flock, file, LOCK_EX | LOCK_NB), 0) << "somebody holds the lock";
        close(file);
    }

    std::vector<std::string> lock_calls;
    const long descriptors_before = open_descriptors();
};

struct Step : NamedRow {
    int (*call)();
    std::string before, after;  // in the file
    std::string unlocked_log, closed_log;
};

class TurnStep : public TurnTest, public testing::WithParamInterface<Step> {
  protected:
    TurnStep() { g_turn_held = 1; }
};

INSTANTIATE_TEST_SUITE_P(Of, TurnStep,
                         testing::Values(Step{"Claim", api_get_cloudwtpflag, "", "cloud",
                                              "api_get_cloudwtpflag flock failed\n\n",
                                              "api_get_cloudwtpflag fd == NULL\n\n"},
                                         Step{"Release", api_release_cloudwtpflag, "cloud", "", "",
                                              ""}),
                         RowName());

TEST_P(TurnStep, LooksAndWritesUnderTheLock) {
    hold(GetParam().before);
    EXPECT_EQ(GetParam().call(), 0);
    EXPECT_THAT(lock_calls, testing::ElementsAre("lock at " + GetParam().before,
                                                 "unlock at " + GetParam().after));
    expect_given_back();
}

TEST_P(TurnStep, CreatesAMissingFile) {
    const mode_t mask = umask(0);
    EXPECT_EQ(GetParam().call(), 0);
    umask(mask);
    EXPECT_EQ(held(), GetParam().after);
    EXPECT_EQ(g_turn_held, GetParam().after.empty() ? 0 : 1);
    EXPECT_EQ(std::filesystem::status(kTurnFile).permissions(), std::filesystem::perms{0644});
}

// A failed opening shows up at the lock.
TEST_P(TurnStep, FileThatCannotBeOpened) {
    std::filesystem::create_directory(kTurnFile);
    EXPECT_EQ(GetParam().call(), -1);
    EXPECT_EQ(logged(), GetParam().unlocked_log);
    EXPECT_EQ(g_turn_held, 1);
}

TEST_P(TurnStep, FailedLockLeavesTheFileAlone) {
    hold(GetParam().before);
    calls::answer<flock>() = [](int, int) {
        errno = ENOLCK;
        return -1;
    };
    EXPECT_EQ(GetParam().call(), -1);
    EXPECT_EQ(logged(), GetParam().unlocked_log);
    EXPECT_EQ(held(), GetParam().before);
    EXPECT_EQ(g_turn_held, 1);
    EXPECT_EQ(lock_calls.size(), 1u) << "what was not locked is not unlocked";
    expect_given_back();
}

// A program that runs without standard input gets descriptor 0 for the turn file.
TEST_P(TurnStep, DescriptorZeroCountsAsNotOpened) {
    hold(GetParam().before);
    const int failures = world::run_apart([this] {
        close(STDIN_FILENO);
        const int result = GetParam().call();
        const bool stays_open = fcntl(STDIN_FILENO, F_GETFD) >= 0;
        return (result != -1) + (g_turn_held != 1) + !lock_calls.empty() + !stays_open;
    });
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(logged(), GetParam().closed_log);
    EXPECT_EQ(held(), GetParam().before);
}

class TurnClaim : public TurnTest {
  protected:
    static std::string refusal(const std::string &content) {
        return "api_get_cloudwtpflag not my turn, buf \"" + content +
               "\" func api_get_cloudwtpflag line 516\n\n";
    }
};

TEST_F(TurnClaim, IsConfirmedByNothingAndByEitherTurnWord) {
    const std::pair<std::string, int> rows[] = {
        {"", 499}, {"cloud", 504}, {"zorbcon", 510}, {std::string("cloud\0other", 11), 504}};
    for (const auto &[content, log_id] : rows) {
        g_turn_held = 0;
        hold(content);
        EXPECT_EQ(api_get_cloudwtpflag(), 0);
        EXPECT_EQ(held(), content.empty() ? "cloud" : content);
        EXPECT_EQ(g_turn_held, 1);
        EXPECT_EQ(logged(), "api_get_cloudwtpflag OK " + std::to_string(log_id) + "\n\n");
        expect_given_back();
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
            expect_given_back();
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

TEST_F(TurnClaim, LinkThatVanishesIsNotFollowed) {
    std::filesystem::create_symlink("/tmp/target", kTurnFile);
    calls::answer<lstat>() = [](const char *, struct stat *) { return -1; };
    EXPECT_EQ(api_get_cloudwtpflag(), -1);
    calls::answer<lstat>() = nullptr;
    EXPECT_FALSE(world::exists("/tmp/target"));
    EXPECT_EQ(api_get_cloudwtpflag(), 0);
    EXPECT_EQ(world::read_file("/tmp/target"), "cloud");
}

// Memory of this process at address zero opens but cannot be read.
TEST_F(TurnClaim, FailedReadIsRefused) {
    std::filesystem::create_symlink("/proc/self/mem", kTurnFile);
    do_not_note_locks();
    EXPECT_EQ(api_get_cloudwtpflag(), -1);
    EXPECT_EQ(logged(), refusal(""));
    EXPECT_EQ(g_turn_held, 0);
}

using TurnRelease = TurnTest;

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

class TurnProcesses : public TurnTest {
  protected:
    // Whether some process waits for a file lock; the kernel marks it with an arrow.
    static bool somebody_waits() {
        return world::read_file("/proc/locks").find("-> FLOCK") != std::string::npos;
    }

    // Runs `call` in another thread while the lock is taken; when it waits, changes the file to
    // `content` and gives the lock back. Returns the result of the call.
    static int run_behind_the_lock(int (*call)(), const std::string &content) {
        const int file = open(kTurnFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        syscall(SYS_flock, file, LOCK_EX);
        int result = 99;
        std::thread other([&] { result = call(); });
        for (int i = 0; i < 5000 && !somebody_waits(); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_TRUE(somebody_waits());
        hold(content);
        close(file);
        other.join();
        return result;
    }
};

TEST_F(TurnProcesses, BothStepsWaitForTheLockBeforeTheyLook) {
    hold("other");
    EXPECT_EQ(run_behind_the_lock(api_get_cloudwtpflag, ""), 0);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(logged(), "api_get_cloudwtpflag OK 499\n\n");
    EXPECT_EQ(run_behind_the_lock(api_get_cloudwtpflag, "other"), -1);
    EXPECT_EQ(held(), "other");
    EXPECT_EQ(run_behind_the_lock(api_release_cloudwtpflag, "cloud"), 0);
    EXPECT_EQ(held(), "");
}

TEST_F(TurnProcesses, EightOfThemLeaveAValidFile) {
    constexpr int kTurns = 10000;
    g_console_debug = 0;
    do_not_note_locks();
    const std::vector<int> results = world::run_together(8, [](int) {
        for (int turn = 0; turn < kTurns; ++turn) {
            if (api_get_cloudwtpflag() != 0 || api_release_cloudwtpflag() != 0) {
                return 1;
            }
        }
        return 0;
    });
    EXPECT_EQ(results, std::vector<int>(8, 0));
    EXPECT_EQ(held(), "");
    EXPECT_EQ(api_get_cloudwtpflag(), 0);
    EXPECT_EQ(held(), "cloud");
}

}  // namespace
