// Several processes at the turn file.
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <thread>

#include "testing/spawn.h"
#include "turn_test.h"

namespace {

class TurnProcesses : public TurnTest {
  protected:
    // Whether some process waits for a file lock; the kernel marks it with an arrow.
    static bool somebody_waits() {
        return world::read_file("/proc/locks").find("-> FLOCK") != std::string::npos;
    }

    // Runs `call` in another thread while the lock is taken; when it waits, changes the file to
    // `content` and gives the lock back. Returns the result of the call.
    static int run_behind_the_lock(const std::function<int()> &call, const std::string &content) {
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

TEST_F(TurnProcesses, ClaimWaitsForTheLockBeforeItLooks) {
    hold("other");
    EXPECT_EQ(run_behind_the_lock(api_get_cloudwtpflag, ""), 0);
    EXPECT_EQ(held(), "cloud");
    EXPECT_EQ(logged(), "api_get_cloudwtpflag OK 499\n\n");
    EXPECT_EQ(run_behind_the_lock(api_get_cloudwtpflag, "other"), -1);
    EXPECT_EQ(held(), "other");
}

TEST_F(TurnProcesses, ReleaseWaitsForTheLock) {
    hold("");
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
