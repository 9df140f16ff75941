// This program's allocator, in the place of libc's: every allocation of the program, of libc and of
// each library it uses passes here, is counted, and fails when it is told to.
#pragma once

#include <cstddef>

namespace failing_memory {

enum class Mode { kOnce, kFromThenOn };

// From now on every block is followed until it is freed.
void follow();

// From now on allocations are counted, from 1, and number `fail_at` fails (0: none), alone or with
// all that come after it.
void watch(std::size_t fail_at, Mode mode);

// As watch() without a failure; `of_openssl`, of `size`, is told for each number whether it is
// OpenSSL that asks.
void watch_askers(bool *of_openssl, std::size_t size);

// From now on none fails; counting goes on.
void give_back();

// Counts no more. The results stay until the next watch().
void stop();

std::size_t asked();   // allocations while watched
std::size_t failed();  // of these

// Whether the first that failed was OpenSSL's.
bool openssl_asked();

std::size_t live();        // blocks that are followed and not freed
std::size_t first_live();  // the number of the first of them that was allocated while watched, or 0

}  // namespace failing_memory
