// What the tests of the turn lock share. The stand-in for flock() notes each call, with what the
// turn file held at that moment, and can fail; otherwise it passes the call on.
#pragma once

#include <sys/file.h>

#include <string>
#include <vector>

#include "kdump/turn_lock.h"
#include "tests/support/logged_test.h"
#include "tests/support/paths.h"

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

extern std::vector<LockCall> lock_calls;
extern bool note_lock_calls;
extern bool fail_lock_calls;

class TurnTest : public LoggedTest {
  protected:
    TurnTest() {
        lock_calls.clear();
        note_lock_calls = true;
        fail_lock_calls = false;
        g_turn_held = 0;
    }
    ~TurnTest() override {
        note_lock_calls = false;
        fail_lock_calls = false;
    }

    static void hold(const std::string &content) { world::write_file(kTurnFile, content); }
    static std::string held() { return world::read_file(kTurnFile); }

    // Nobody holds the file's lock.
    static bool is_unlocked();
};
