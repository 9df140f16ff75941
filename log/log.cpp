#include "log/log.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "base/bare_format.h"
#include "base/owned.h"

using namespace cloudagent;

uint32_t g_console_debug = 0;
uint32_t g_file_log = 0;
char g_log_path[128] = "";

namespace {

constexpr const char *kConsole = "/dev/console";
constexpr std::size_t kStampSpace = 32;  // "[", the time, "]", a NUL and a few to spare

OwnedText finished_line(const char *format, std::va_list arguments) noexcept {
    const std::time_t now = std::time(nullptr);
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) {
        return nullptr;
    }
    const std::size_t size = static_cast<std::size_t>(length) + kStampSpace;
    OwnedText line(static_cast<char *>(std::malloc(size)));
    if (!line) {
        return nullptr;
    }
    char stamp[64];
    tzset();  // ctime_r alone would miss a change of the time zone
    const char *const time_text = ctime_r(&now, stamp);
    const int written = std::snprintf(line.get(), size, "[%s", time_text ? time_text : "\n");
    const auto start = static_cast<std::size_t>(written);
    line.get()[start - 1] = ']';  // over the newline that ends the time
    (void)std::vsnprintf(line.get() + start, size - start - 1, format, arguments);
    return line;
}

void write_to_console(const char *line) noexcept {
    const OwnedDescriptor console(open(kConsole, O_WRONLY | O_NOCTTY | O_CLOEXEC));
    if (console.get() >= 0) {
        [[maybe_unused]] const ssize_t written = write(console.get(), line, std::strlen(line));
    }
}

void write_to_file(const char *line) noexcept {
    const OwnedFile file(std::fopen(g_log_path, "a"));
    const bool written = file && bare_format(file.get(), line) && std::fflush(file.get()) == 0;
    if (!written) {
        std::printf("str \"%s\" write to %s fail", line, g_log_path);
    }
}

[[gnu::noinline]] void write_line(const char *format, std::va_list arguments) noexcept {
    const OwnedText line = finished_line(format, arguments);
    if (!line) {
        return;
    }
    if (g_console_debug != 0) {
        write_to_console(line.get());
    }
    if (g_file_log != 0) {
        write_to_file(line.get());
    }
}

}  // namespace

// With both sinks off, as on most devices, a line must cost next to nothing: write_line does the
// work, so that this function needs no stack guard. It fits one cache line.
__attribute__((no_stack_protector, aligned(64))) void cloud_log(const char *format, ...) noexcept {
    if (__builtin_expect(g_console_debug | g_file_log, 0) != 0) {
        std::va_list arguments;
        va_start(arguments, format);
        write_line(format, arguments);
        va_end(arguments);
    }
}
