#include "state/one_value_file.h"

#include <cstdarg>
#include <cstdio>

#include "support/owned.h"

bool read_value(const char *path, const char *conversion, void *value) noexcept {
    const OwnedFile file(std::fopen(path, "r"));
    if (!file) {
        return false;
    }
    [[maybe_unused]] const int converted = std::fscanf(file.get(), conversion, value);
    return true;
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
    return true;
}
