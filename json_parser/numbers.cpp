#include <cfloat>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "json_parser/nodes.h"

namespace cloudagent {
namespace {

bool is_digit(char byte) noexcept { return byte >= '0' && byte <= '9'; }

const char *skip_digits(const char *at) noexcept {
    while (is_digit(*at)) {
        ++at;
    }
    return at;
}

// From an opening quote to the end of the string, or of the text.
const char *skip_string(const char *at) noexcept {
    do {
        ++at;
        at += std::strcspn(at, "\"\\");
        if (*at == '\\' && at[1] != '\0') {
            ++at;
        } else if (*at == '"') {
            return at + 1;
        }
    } while (*at != '\0');
    return at;
}

// At most one leading zero, then digits that begin with 1 to 9.
const char *uint64_end(const char *begin) noexcept {
    const char *const digits = *begin == '0' ? begin + 1 : begin;
    return *digits == '0' ? digits : skip_digits(digits);
}

const char *double_end(const char *begin) noexcept {
    const char *const digits = *begin == '-' ? begin + 1 : begin;
    const char *end = skip_digits(digits);
    if (end == digits) {
        return begin;
    }
    if (*end == '.' && is_digit(end[1])) {
        end = skip_digits(end + 1);
    }
    if (*end == 'e' || *end == 'E') {
        const char *const exponent = end[1] == '+' || end[1] == '-' ? end + 2 : end + 1;
        end = is_digit(*exponent) ? skip_digits(exponent) : end;
    }
    return end;
}

// At most a rounding error above a whole number, and below 1e60. std::floor would make every
// process load the mathematics library.
bool nearly_whole(double value) noexcept {
    constexpr double kWholeFromHere = 1LL << 53;
    const double size = std::fabs(value);
    if (!(size < kWholeFromHere)) {
        return size < 1e60;
    }
    const double part = value - static_cast<double>(static_cast<int64_t>(value));
    return (part < 0 ? 1 + part : part) <= DBL_EPSILON;
}

int print_double(const JsonNode &node, char *text) noexcept {
    const double value = node.valuedouble;
    const double size = std::fabs(value);
    if (std::fabs(node.valueint - value) <= DBL_EPSILON) {  // so an int holds it
        return std::snprintf(text, kNumberSpace, "%d", node.valueint);
    }
    if (nearly_whole(value)) {
        return std::snprintf(text, kNumberSpace, "%.0f", value);
    }
    const bool plain = size >= 1e-6 && size <= 1e9;
    const int length = std::snprintf(text, kNumberSpace, plain ? "%.1f" : "%e", value);
    char &point = text[std::strspn(text, "+-0123456789einfa")];
    point = point == '\0' ? '\0' : '.';  // replaces the locale's
    return length;
}

}  // namespace

const char *find_number(const char *at) noexcept {
    while (*at != '\0' && *at != '-' && !is_digit(*at)) {
        at = *at == '"' ? skip_string(at) : at + 1;
    }
    return at;
}

const char *number_end(const char *begin, NumberMode mode) noexcept {
    return mode == NumberMode::kDouble ? double_end(begin) : uint64_end(begin);
}

void parse_number(JsonNode &node, const char *begin, NumberMode mode, char *scratch) noexcept {
    const char *const end = number_end(begin, mode);
    if (mode == NumberMode::kUint64) {
        node.type = JSON_KIND_UINT64;
        for (const char *at = begin; at != end; ++at) {
            node.valueulonglong = node.valueulonglong * 10 + static_cast<uint64_t>(*at - '0');
        }
        return;
    }
    const auto length = static_cast<std::size_t>(end - begin);
    std::memcpy(scratch, begin, length);
    scratch[length] = '\0';
    if (char *const point = std::strchr(scratch, '.')) {
        *point = *std::localeconv()->decimal_point;  // strtod expects the locale's
    }
    set_number(node, std::strtod(scratch, nullptr));
}

bool is_number_kind(int kind) noexcept {
    return kind == JSON_KIND_NUMBER || kind == JSON_KIND_UINT32 || kind == JSON_KIND_UINT64;
}

std::size_t print_number(const JsonNode &node, char *text) noexcept {
    const int kind = kind_of(node);
    const unsigned long long value =
        kind == JSON_KIND_UINT32 ? static_cast<uint32_t>(node.valueint) : node.valueulonglong;
    return static_cast<std::size_t>(kind == JSON_KIND_NUMBER
                                        ? print_double(node, text)
                                        : std::snprintf(text, kNumberSpace, "%llu", value));
}

}  // namespace cloudagent
