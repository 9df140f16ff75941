#include "base/bare_format.h"

#include <climits>
#include <cstdlib>
#include <cstring>

#include "base/fixed_text.h"

namespace cloudagent {
namespace {

using Conversion = FixedText<48>;

// Takes the digits of a position, width or precision; -1 without any.
long long take_digits(const char *&at) noexcept {
    const std::size_t digits = std::strspn(at, "0123456789");
    const long long value = digits != 0 ? std::strtoll(at, nullptr, 10) : -1;
    at += digits;
    return value;
}

// Skips "2$" behind "%" or "*": without arguments a position means nothing.
void skip_position(const char *&at) noexcept {
    const char *end = at;
    const long long position = take_digits(end);
    if (*end == '$' && position > 0 && position <= INT_MAX) {
        at = end + 1;
    }
}

// Takes a width or precision. False for a number that no int holds: stdio reports an error there.
bool take_number(const char *&at, const char *star_value, Conversion &conversion) noexcept {
    if (*at == '*') {
        conversion.append("%s", star_value);
        skip_position(++at);
        return true;
    }
    const long long number = take_digits(at);
    if (number >= 0) {
        conversion.append("%lld", number);
    }
    return number <= INT_MAX;
}

int print(std::FILE *out, const char *conversion, char kind) noexcept {
    switch (kind) {
        case 'n':
            return 0;
        case '%':
            return std::fputc('%', out);
        case 's':  // prints "(null)", or nothing where that does not fit
        case 'p':
            return std::fprintf(out, conversion, static_cast<void *>(nullptr));
        default:
            return std::strchr("aAeEfFgG", kind) != nullptr ? std::fprintf(out, conversion, 0.0)
                                                            : std::fprintf(out, conversion, 0);
    }
}

// Prints the conversion behind a percent sign and takes it; false on failure.
bool print_conversion(std::FILE *out, const char *&at) noexcept {
    Conversion conversion;
    conversion.format("%%");
    skip_position(at);
    for (; *at != '\0' && std::strchr("-+ #0'I", *at) != nullptr; ++at) {
        if (std::strchr(conversion.c_str(), *at) == nullptr) {
            conversion.append("%c", *at);
        }
    }
    bool fits = take_number(at, "", conversion);
    if (fits && *at == '.') {
        conversion.append(".");
        fits = take_number(++at, "0", conversion);
    }
    if (*at != '\0' && std::strchr("hlLqjztZ", *at) != nullptr) {  // zero is zero in every size
        at += (*at == 'h' || *at == 'l') && at[1] == *at ? 2 : 1;
    }
    const char kind = *at == 'S' ? 's' : *at == 'C' ? 'c' : *at;
    if (!fits || kind == '\0') {
        return false;
    }
    ++at;
    // stdio shows an unknown conversion without its modifier. With one, no kind is read as a flag.
    const bool known = std::strchr("diouxXbBcspaAeEfFgG", kind) != nullptr;
    conversion.append("%s%c", known ? "" : "z", kind);
    return print(out, conversion.c_str(), kind) >= 0;
}

}  // namespace

bool bare_format(std::FILE *out, const char *text) noexcept {
    while (*text != '\0') {
        const std::size_t plain = std::strcspn(text, "%");
        if (std::fwrite(text, 1, plain, out) != plain) {
            return false;
        }
        text += plain;
        if (*text == '%' && !print_conversion(out, ++text)) {
            return false;
        }
    }
    return true;
}

}  // namespace cloudagent
