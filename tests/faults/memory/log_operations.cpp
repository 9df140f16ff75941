// The log: without memory a line is dropped, or reported on standard output.
#include <cstring>

#include "log/log.h"
#include "operation.h"
#include "testing/files.h"

namespace {

constexpr const char *kLogFile = "/tmp/torture.log";

void log_to_file() {
    without_file(kLogFile);
    std::strcpy(g_log_path, kLogFile);
    g_file_log = 1;
}

void log_short_line() { cloud_log("%s %d\n", "main", 946); }

// The line that reached the file, and what standard output says of a failure.
std::string file_outcome() {
    g_file_log = 0;
    const std::string written = world::read_file_if_any(kLogFile);
    const std::string told = output_text();
    const bool failed = told.find(" write to /tmp/torture.log fail") != std::string::npos;
    return (written.empty() ? "no line" : "line of " + std::to_string(written.size())) +
           (told.empty() ? ""
            : failed     ? ", failure told"
                         : ", " + told);
}

std::string console_outcome() {
    const std::string text = console_text();
    return text.size() < 100 ? text : "line of " + std::to_string(text.size());
}

}  // namespace

Operations log_operations() {
    return {
        {"cloud_log, console", nothing, log_short_line, console_outcome, {"main 946\n", ""}},
        // libc needs memory of its own for a wide field.
        {"cloud_log, console, a wide field",
         nothing,
         [] { cloud_log("%05000d\n", 7); },
         console_outcome,
         {"line of 5001", ""}},
        {"cloud_log, file",
         log_to_file,
         log_short_line,
         file_outcome,
         {"line of 35", "no line", "no line, failure told"}},
        {"cloud_log, file, a wide field in the text",
         log_to_file,
         [] { cloud_log("%s\n", "%05000d"); },
         file_outcome,
         {"line of 5027", "no line", "no line, failure told"}},
    };
}
