// Files that hold one value as text. Each call opens, reads or writes, and closes the file.
#pragma once

#include <cstddef>
#include <cstdint>

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

// Replaces the file's content. False when it cannot be opened; a failed write goes unnoticed.
bool write_value(const char *path, const char *format, ...) noexcept
    __attribute__((format(printf, 2, 3)));

}  // namespace cloudagent
