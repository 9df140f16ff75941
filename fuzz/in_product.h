/*
 * libc calls of the product that a fuzz target answers itself. Calls of libFuzzer and the
 * sanitizers always reach libc.
 */
#pragma once

#include <resolv.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "fuzz.h"
#include "testing/calls.h"

namespace fuzz {

struct Answers {
    std::FILE *(*open_file)(const char *path, const char *mode) = nullptr;
    int (*run_command)(const char *command) = nullptr;
    int (*send_signal)(int pid, int number) = nullptr;
    void (*sleep_for)(unsigned seconds) = nullptr;
};

// While the object lives, its thread's calls reach these functions. Without a function fopen
// reaches libc; system, sleep and kill are findings.
class InProduct {
  public:
    explicit InProduct(const Answers &answers) {
        if (answers.open_file != nullptr) {
            calls::answer<std::fopen>() = answers.open_file;
        }
        calls::answer<std::system>() = [&](const char *command) {
            REQUIRE(answers.run_command != nullptr);
            return answers.run_command(command);
        };
        calls::answer<::kill>() = [&](int pid, int number) {
            REQUIRE(answers.send_signal != nullptr);
            return answers.send_signal(pid, number);
        };
        calls::answer<::sleep>() = [&](unsigned seconds) {
            REQUIRE(answers.sleep_for != nullptr);
            answers.sleep_for(seconds);
            return 0;
        };
        // Reads the resolver's configuration, which no input changes.
        calls::answer<res_init>() = [] { return 0; };
    }
    ~InProduct() {
        calls::answer<std::fopen>() = nullptr;
        calls::answer<std::system>() = nullptr;
        calls::answer<::kill>() = nullptr;
        calls::answer<::sleep>() = nullptr;
        calls::answer<res_init>() = nullptr;
    }
    InProduct(const InProduct &) = delete;
    InProduct &operator=(const InProduct &) = delete;
};

// For Answers::open_file: no file exists.
inline std::FILE *no_file(const char *, const char *) { return nullptr; }

}  // namespace fuzz
