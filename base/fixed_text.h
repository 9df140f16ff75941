// Text in a buffer of fixed size: cut to fit, always terminated.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace cloudagent {

template <std::size_t Size>
class FixedText {
  public:
    // Replaces the text. The arguments must not point into this text.
    [[gnu::format(printf, 2, 3)]] void format(const char *format, ...) noexcept {
        std::va_list arguments;
        va_start(arguments, format);
        print_at(0, format, arguments);
        va_end(arguments);
    }

    // Adds to the end of the text.
    [[gnu::format(printf, 2, 3)]] void append(const char *format, ...) noexcept {
        std::va_list arguments;
        va_start(arguments, format);
        print_at(length(), format, arguments);
        va_end(arguments);
    }

    const char *c_str() const noexcept { return buffer_; }
    char *data() noexcept { return buffer_; }
    std::size_t length() const noexcept { return std::strlen(buffer_); }
    static constexpr std::size_t size() noexcept { return Size; }

  private:
    void print_at(std::size_t start, const char *format, std::va_list arguments) noexcept {
        if (std::vsnprintf(buffer_ + start, Size - start, format, arguments) < 0) {
            buffer_[start] = '\0';
        }
    }

    char buffer_[Size] = {};
};

}  // namespace cloudagent
