#include "state/one_value_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>

#include "base/fixed_text.h"
#include "base/owned.h"

namespace cloudagent {
namespace {

template <class Value>
FileValue read_one(const char *path, const char *conversion, Value *value) noexcept {
    const OwnedFile file(std::fopen(path, "r"));
    if (!file) {
        return FileValue::kNoFile;
    }
    return std::fscanf(file.get(), conversion, value) == 1 ? FileValue::kRead : FileValue::kNone;
}

}  // namespace

FileValue read_number(const char *path, int32_t *number) noexcept {
    return read_one(path, "%d", number);
}

FileValue read_number(const char *path, uint32_t *number) noexcept {
    return read_one(path, "%u", number);
}

FileValue read_word(const char *path, char *word, std::size_t size) noexcept {
    FixedText<32> conversion;
    conversion.format("%%%zus", size - 1);
    return read_one(path, conversion.c_str(), word);
}

bool write_value(const char *path, const char *format, ...) noexcept {
    const OwnedFile file(std::fopen(path, "w"));
    if (!file) {
        return false;
    }
    std::va_list arguments;
    va_start(arguments, format);
    (void)std::vfprintf(file.get(), format, arguments);
    va_end(arguments);
    (void)store(file.get());
    return true;
}

void create_number(const char *path, uint32_t number) noexcept {
    struct stat found = {};
    const bool missing = lstat(path, &found) != 0 && errno == ENOENT;  // not even a link
    const OwnedFile file(std::fopen(path, "w"));
    if (!file) {
        return;
    }
    const bool printed = std::fprintf(file.get(), "%u", number) > 0;
    if (!(store(file.get()) && printed) && missing) {
        unlink(path);
    }
}

bool store(std::FILE *file) noexcept {
    return std::fflush(file) == 0 &&
           (fsync(fileno(file)) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS);
}

}  // namespace cloudagent
