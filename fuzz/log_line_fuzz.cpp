// Any texts in a line of the log file, where the finished line serves as a format again.
// Input: a character that chooses the line's own format; then the texts, one per line.
//
// Widths and precisions are cut to three digits unless they exceed an int: each asks for as many
// bytes of output.
#include <algorithm>
#include <cctype>
#include <cstring>

#include "fuzz.h"
#include "log/log.h"
#include "testing/calls.h"

namespace {

constexpr std::size_t kStampLength = sizeof "[Mon Nov 16 06:57:51 2026]" - 1;
constexpr std::size_t kMostDigits = 3;
constexpr std::size_t kDigitsOfAnInt = 10;
constexpr std::size_t kWidest = 999;

std::string written;

ssize_t take(void *, const char *bytes, std::size_t size) {
    written.append(bytes, size);
    return static_cast<ssize_t>(size);
}

std::optional<std::FILE *> open_log(const char *path, const char *mode) {
    if (std::strcmp(path, g_log_path) != 0) {
        return std::nullopt;  // libFuzzer's
    }
    REQUIRE(std::strcmp(mode, "a") == 0);
    cookie_io_functions_t functions = {};
    functions.write = take;
    return fopencookie(nullptr, mode, functions);
}

std::string with_short_numbers(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        std::size_t digits = 0;
        while (digits < text.size() && std::isdigit(static_cast<unsigned char>(text[digits]))) {
            ++digits;
        }
        const std::string_view number = text.substr(0, digits);
        const std::size_t zeros = std::min(number.find_first_not_of('0'), digits);
        const std::size_t significant = digits - zeros;
        const bool is_short = significant <= kMostDigits || significant > kDigitsOfAnInt;
        result.append(is_short ? number : number.substr(0, zeros + kMostDigits));
        text.remove_prefix(digits);
        const std::size_t plain = std::min(text.find_first_of("0123456789"), text.size());
        result.append(text.substr(0, plain));
        text.remove_prefix(plain);
    }
    return result;
}

void log_one(char shape, const char *first, const char *second) {
    switch (shape) {
        case '1':
            cloud_log("%s %d unlink %s\n\n", first, 939, second);
            break;
        case '2':
            cloud_log("%d%% of %s", 50, first);
            break;
        case '3':
            cloud_log("%.3s|%s", first, second);
            break;
        default:
            cloud_log("%s|%s", first, second);
    }
}

void begin() {
    calls::answer<std::fopen>() = open_log;
    g_file_log = 1;
    std::strcpy(g_log_path, "the log");
    // stdout gets the lines that cannot be written.
    REQUIRE(std::freopen("/dev/null", "w", stdout) != nullptr);
}

void try_input(fuzz::Input input) {
    const std::string_view shape = input.line();
    const std::unique_ptr<char[]> first = fuzz::c_text(with_short_numbers(input.line()));
    const std::unique_ptr<char[]> second = fuzz::c_text(with_short_numbers(input.line()));
    written.clear();
    log_one(shape.empty() ? '0' : shape.front(), first.get(), second.get());
    const std::string texts = std::string(first.get()) + "|" + second.get();
    REQUIRE(written.size() >= kStampLength && written[kStampLength - 1] == ']');
    REQUIRE(written.size() <= kStampLength + (texts.size() + 32) * kWidest);
    if (shape == "0" && !fuzz::contains(texts, "%")) {
        REQUIRE(written.substr(kStampLength) == texts);
    }
    if (shape == "0") {  // the text before the first conversion stays
        const std::size_t plain = std::min(texts.find('%'), texts.size());
        REQUIRE(written.compare(kStampLength, plain, texts, 0, plain) == 0);
    }
}

}  // namespace

// AddressSanitizer's own format parser aborts at conversions that only libc understands.
extern "C" const char *__asan_default_options() { return "check_printf=0"; }

const fuzz::Target fuzz::target = {try_input, begin};
