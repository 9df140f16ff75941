// Helpers of the rows, and all modules' rows in one table.
#include <unistd.h>

#include "operation.h"
#include "testing/calls.h"
#include "testing/failing_memory.h"
#include "testing/files.h"

long g_result;
char g_text[1024];

// Nothing waits.
void memory_returns_at_sleep(int number, const char *file) {
    constexpr int kTooManySleeps = 20;
    calls::answer<::sleep>() = [=, sleeps = 0](unsigned) mutable {
        ++sleeps;
        if (sleeps == number)
            memory_give_back();
        if (sleeps == kTooManySleeps)
            unlink(file);
        return 0;
    };
}

std::string result() { return std::to_string(g_result) + ", "; }

std::string result_and_text() { return result() + g_text; }

std::string transfer_result() {
    return g_result == 0                    ? "done"
           : g_result > 0 && g_result < 100 ? "libcurl's code"
                                            : std::to_string(g_result);
}

std::string content_of(const std::string &path) {
    return world::exists(path) ? "'" + world::read_file(path) + "'" : "none";
}

std::string taken(const std::string &path) {
    const std::string content = content_of(path);
    without_file(path);
    return content;
}

void without_file(const std::string &path) { unlink(path.c_str()); }

Operations joined(const std::vector<Operations> &tables) {
    Operations all;
    for (const Operations &table : tables)
        all.insert(all.end(), table.begin(), table.end());
    return all;
}

Operations all_operations() {
    return joined({log_operations(), state_operations(), digest_operations(), json_operations(),
                   request_operations(), cloud_operations(), device_operations(),
                   job_operations()});
}
