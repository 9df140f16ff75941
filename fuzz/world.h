/*
 * For targets whose product code uses files: a private world (testing/private_world.h), entered in
 * LLVMFuzzerInitialize, and fast writing of small files.
 */
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "fuzz.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"

namespace fuzz {

inline void write_descriptor(int descriptor, std::string_view content) {
    REQUIRE(descriptor >= 0);
    REQUIRE(ftruncate(descriptor, 0) == 0);
    REQUIRE(pwrite(descriptor, content.data(), content.size(), 0) ==
            static_cast<ssize_t>(content.size()));
}

inline void write_file(const char *path, std::string_view content) {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
    write_descriptor(descriptor, content);
    close(descriptor);
}

inline bool exists(const char *path) { return access(path, F_OK) == 0; }

// The lowest free descriptor: unchanged if nothing was left open.
inline int free_descriptor() {
    const int descriptor = dup(STDERR_FILENO);
    close(descriptor);
    return descriptor;
}

}  // namespace fuzz
