// The log: a line whose memory is not to be had is dropped, or told of on standard output.
#include <algorithm>
#include <cstring>

#include "log/log.h"
#include "operation.h"
#include "testing/files.h"

namespace {

constexpr const char *kLogFile = "/tmp/torture.log";

// The line that reached the file, or what standard output says instead, shortened.
std::string file_outcome() {
    g_file_log = 0;
    const std::string written = world::read_file_if_any(kLogFile);
    const std::string told = output_text();
    std::string outcome = written.empty() ? "no line" : "line of " + std::to_string(written.size());
    if (!told.empty())
        outcome += told.find(" write to /tmp/torture.log fail") != std::string::npos
                       ? ", failure told"
                       : ", " + told;
    return outcome;
}

void log_to_file() {
    without_file(kLogFile);
    std::strcpy(g_log_path, kLogFile);
    g_file_log = 1;
}

std::string console_outcome() {
    const std::string text = console_text();
    return text.size() < 100 ? text : "line of " + std::to_string(text.size());
}

const auto kNothing = [] {};

}  // namespace

Operations log_operations() {
    return {
        alone("cloud_log, console", kNothing, [] { cloud_log("%s %d\n", "main", 946); },
              console_outcome, {"main 946\n", ""}),
        // libc needs memory of its own for a wide field.
        alone("cloud_log, console, a wide field", kNothing, [] { cloud_log("%05000d\n", 7); },
              console_outcome, {"line of 5001", ""}),
        alone("cloud_log, file", log_to_file, [] { cloud_log("%s %d\n", "main", 946); },
              file_outcome, {"line of 35", "no line", "no line, failure told"}),
        alone("cloud_log, file, a wide field in the text", log_to_file,
              [] { cloud_log("%s\n", "%05000d"); }, file_outcome,
              {"line of 5027", "no line", "no line, failure told"}),
    };
}
