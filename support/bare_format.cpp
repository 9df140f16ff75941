#include "support/bare_format.h"

#include <cctype>
#include <cstring>

#include "support/fixed_text.h"

namespace {

constexpr const char *kFlags = "-+ #0'I";
constexpr const char *kLengths = "hlLqjztZ";
constexpr const char *kNoConversions = "hlLqjztZ-+ #0'I.*$123456789";
constexpr std::size_t kMostDigits = 10;  // of a width or precision that an int can hold

bool is_digit(char c) noexcept { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

// One conversion, rebuilt without positions and length modifiers: zero is zero in every size.
struct Conversion {
    FixedText<48> text;
    char kind = '\0';  // '\0' when the text ends first
    const char *end = nullptr;
};

const char *skip_digits(const char *at) noexcept {
    while (is_digit(*at)) {
        ++at;
    }
    return at;
}

// "2$" after "%" or "*": without arguments the position means nothing.
const char *skip_position(const char *at) noexcept {
    const char *const after = skip_digits(at);
    return after != at && *after == '$' ? after + 1 : at;
}

// A width or precision. A number too long for an int stays too long, so that stdio refuses it.
const char *take_number(const char *at, const char *star_value, FixedText<48> &text) noexcept {
    if (*at == '*') {
        text.append("%s", star_value);
        return skip_position(at + 1);
    }
    const char *const after = skip_digits(at);
    auto length = static_cast<std::size_t>(after - at);
    while (length > kMostDigits && *at == '0') {
        ++at;
        --length;
    }
    text.append("%.*s", static_cast<int>(length > kMostDigits ? kMostDigits + 1 : length), at);
    return after;
}

// One modifier, of which h and l may be doubled.
const char *skip_length(const char *at) noexcept {
    if (*at == '\0' || std::strchr(kLengths, *at) == nullptr) {
        return at;
    }
    return (*at == 'h' || *at == 'l') && at[1] == *at ? at + 2 : at + 1;
}

// at points behind the percent sign.
Conversion read_conversion(const char *at) noexcept {
    Conversion conversion;
    conversion.text.format("%%");
    at = skip_position(at);
    for (const char *flag = kFlags; *flag != '\0'; ++flag) {
        if (std::memchr(at, *flag, std::strspn(at, kFlags)) != nullptr) {
            conversion.text.append("%c", *flag);
        }
    }
    at += std::strspn(at, kFlags);
    at = take_number(at, "", conversion.text);
    if (*at == '.') {
        conversion.text.append(".");
        at = take_number(at + 1, "0", conversion.text);
    }
    at = skip_length(at);
    conversion.kind = *at == 'S' ? 's' : *at == 'C' ? 'c' : *at;
    if (conversion.kind != '\0') {
        conversion.text.append("%c", conversion.kind);
        ++at;
    }
    conversion.end = at;
    return conversion;
}

int print(std::FILE *out, const Conversion &conversion) noexcept {
    const char *const format = conversion.text.c_str();
    if (conversion.kind != '\0' && std::strchr(kNoConversions, conversion.kind) != nullptr) {
        return std::fputs(format, out);  // no conversion at all: it stands for itself
    }
    switch (conversion.kind) {
        case 'n':
            return 0;
        case '%':
            return std::fputc('%', out);
        case 's':
            return std::fprintf(out, format, "(null)");
        case 'p':
            return std::fprintf(out, format, static_cast<void *>(nullptr));
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            return std::fprintf(out, format, 0.0);
        default:  // integers, characters, and what stdio itself makes of the rest
            return std::fprintf(out, format, 0);
    }
}

}  // namespace

bool bare_format(std::FILE *out, const char *text) noexcept {
    while (*text != '\0') {
        const std::size_t plain = std::strcspn(text, "%");
        if (std::fwrite(text, 1, plain, out) != plain) {
            return false;
        }
        text += plain;
        if (*text == '%') {
            const Conversion conversion = read_conversion(text + 1);
            if (print(out, conversion) < 0) {
                return false;
            }
            text = conversion.end;
        }
    }
    return true;
}
