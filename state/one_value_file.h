// Files that hold one value as text. Each call opens, reads or writes, and closes the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace cloudagent {

enum class FileValue {
    kNoFile,  // the file cannot be opened; the variable is unchanged
    kNone,    // the file holds no such value; the variable is unchanged
    kRead
};

FileValue read_number(const char *path, int32_t *number) noexcept;
FileValue read_number(const char *path, uint32_t *number) noexcept;

// Reads the first word, at most size - 1 characters of it, and terminates it.
FileValue read_word(const char *path, char *word, std::size_t size) noexcept;

// Replaces the file's content, and syncs it. False when it cannot be opened; a failed write goes
// unnoticed.
bool write_value(const char *path, const char *format, ...) noexcept
    __attribute__((format(printf, 2, 3)));

// Writes a number as a missing file's first content, and syncs it. A file that was created and not
// stored whole is removed: an empty one would hide the default.
void create_number(const char *path, uint32_t number) noexcept;

// Flushes and syncs what was written: after this a power cut leaves it. False when not all of it is
// stored; files that cannot be synced, such as FIFOs, count as stored.
bool store(std::FILE *file) noexcept;

}  // namespace cloudagent
