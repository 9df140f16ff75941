// Notes each call of flock(), with what the turn file holds at that moment, and may let it fail.
#pragma once

#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <vector>

#include "kdump/turn_lock.h"
#include "testing/logged_test.h"
#include "testing/paths.h"

struct LockCall {
    int operation;
    std::string content;
};

inline bool operator==(const LockCall &a, const LockCall &b) {
    return a.operation == b.operation && a.content == b.content;
}

inline std::ostream &operator<<(std::ostream &out, const LockCall &call) {
    return out << (call.operation == LOCK_EX ? "lock" : "unlock") << " at \"" << call.content
               << '"';
}

class TurnTest : public LoggedTest {
  protected:
    TurnTest() {
        calls::seen<flock>() = [this](int, int operation) {
            const bool readable = std::filesystem::is_regular_file(kTurnFile);
            lock_calls.push_back({operation, readable ? held() : ""});
        };
        g_turn_held = 0;
    }
    ~TurnTest() override {
        do_not_note_locks();
        calls::answer<flock>() = nullptr;
    }

    static void do_not_note_locks() { calls::seen<flock>() = nullptr; }

    static void let_locks_fail() {
        calls::answer<flock>() = [](int, int) {
            errno = ENOLCK;
            return -1;
        };
    }

    static void hold(const std::string &content) { world::write_file(kTurnFile, content); }
    static std::string held() { return world::read_file(kTurnFile); }

    // Nobody holds the file's lock.
    static bool is_unlocked() {
        const int file = open(kTurnFile.c_str(), O_RDONLY | O_CLOEXEC);
        const bool free = syscall(SYS_flock, file, LOCK_EX | LOCK_NB) == 0;
        close(file);
        return free;
    }

    std::vector<LockCall> lock_calls;
};
