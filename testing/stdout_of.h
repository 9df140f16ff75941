// Captures what a function writes to standard output.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>

inline std::string stdout_of(const std::function<void()> &work) {
    std::fflush(stdout);
    const int collected = memfd_create("stdout", MFD_CLOEXEC);
    const int original = dup(STDOUT_FILENO);
    dup2(collected, STDOUT_FILENO);
    work();
    std::fflush(stdout);
    dup2(original, STDOUT_FILENO);
    close(original);
    std::string text(static_cast<size_t>(lseek(collected, 0, SEEK_END)), '\0');
    if (pread(collected, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        text = "standard output cannot be read back";
    }
    close(collected);
    return text;
}
