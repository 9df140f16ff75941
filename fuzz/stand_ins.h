/*
 * Calls of the product that a fuzz target answers itself, from the moment it says so; calls of
 * libFuzzer's and of the sanitizers' own always reach libc. The build names each in --wrap.
 */
#pragma once

#include <cstdio>
#include <string>

namespace fuzz {

struct StandIns {
    std::FILE *(*open_file)(const char *path, const char *mode) = nullptr;  // of fopen
    int (*run_command)(const char *command) = nullptr;                      // of system
    void (*sleep_for)(unsigned seconds) = nullptr;
    int (*send_signal)(int pid, int number) = nullptr;  // of kill
};

// While the object lives, the calls of its thread reach these functions; a null one lets them pass.
// A system, a sleep or a kill that nobody answers ends the program, as a finding.
class InProduct {
  public:
    explicit InProduct(const StandIns &stand_ins);
    ~InProduct();
    InProduct(const InProduct &) = delete;
    InProduct &operator=(const InProduct &) = delete;
};

// For StandIns::open_file: there is no file.
std::FILE *no_file(const char *path, const char *mode);

}  // namespace fuzz
