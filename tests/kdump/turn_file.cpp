#include "turn_file.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

std::vector<LockCall> lock_calls;
bool note_lock_calls = false;
bool fail_lock_calls = false;

extern "C" int flock(int file, int operation) noexcept {
    if (note_lock_calls) {
        const bool readable = std::filesystem::is_regular_file(kTurnFile);
        lock_calls.push_back({operation, readable ? world::read_file(kTurnFile) : ""});
    }
    if (fail_lock_calls) {
        errno = ENOLCK;
        return -1;
    }
    return static_cast<int>(syscall(SYS_flock, file, operation));
}

bool TurnTest::is_unlocked() {
    const int file = open(kTurnFile.c_str(), O_RDONLY | O_CLOEXEC);
    const bool free = syscall(SYS_flock, file, LOCK_EX | LOCK_NB) == 0;
    close(file);
    return free;
}
