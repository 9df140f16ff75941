#include "stand_ins.h"

#include <sys/types.h>

#include "fuzz.h"

namespace {

thread_local const fuzz::StandIns *current = nullptr;

}  // namespace

namespace fuzz {

InProduct::InProduct(const StandIns &stand_ins) { current = &stand_ins; }

InProduct::~InProduct() { current = nullptr; }

std::FILE *no_file(const char *, const char *) { return nullptr; }

}  // namespace fuzz

extern "C" {

std::FILE *__real_fopen64(const char *path, const char *mode);
int __real_system(const char *command);
unsigned __real_sleep(unsigned seconds);
int __real_kill(pid_t pid, int number);

std::FILE *__wrap_fopen64(const char *path, const char *mode) {
    return current != nullptr && current->open_file != nullptr ? current->open_file(path, mode)
                                                               : __real_fopen64(path, mode);
}

int __wrap_system(const char *command) {
    if (current == nullptr) {
        return __real_system(command);
    }
    REQUIRE(current->run_command != nullptr);
    return current->run_command(command);
}

unsigned __wrap_sleep(unsigned seconds) {
    if (current == nullptr) {
        return __real_sleep(seconds);
    }
    REQUIRE(current->sleep_for != nullptr);
    current->sleep_for(seconds);
    return 0;
}

int __wrap_kill(pid_t pid, int number) {
    if (current == nullptr) {
        return __real_kill(pid, number);
    }
    REQUIRE(current->send_signal != nullptr);
    return current->send_signal(pid, number);
}

int __real___res_init();

// Reads the resolver's configuration: nothing that an input could change.
int __wrap___res_init() { return current != nullptr ? 0 : __real___res_init(); }

}  // extern "C"
