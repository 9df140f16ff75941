// A limit on this process's memory, for a child process that is to run out of it.
#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>

// AddressSanitizer ends a program whose allocation fails; valgrind's own memory counts too.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kMemoryCanBeLimited = false;
#else
inline constexpr bool kMemoryCanBeLimited = true;
#endif

// Allows `spare` bytes more than are in use; false when that is impossible. (An emulator accepts
// the limit for its guest and keeps none.)
inline bool limit_memory(uint64_t spare) {
    uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const uint64_t most = pages * static_cast<uint64_t>(sysconf(_SC_PAGESIZE)) + spare;
    const rlimit limit = {most, RLIM_INFINITY};
    rlimit kept = {};
    return kMemoryCanBeLimited && pages > 0 && setrlimit(RLIMIT_AS, &limit) == 0 &&
           getrlimit(RLIMIT_AS, &kept) == 0 && kept.rlim_cur == limit.rlim_cur;
}
