// The words of the rows, and all rooms' rows in one table.
#include <unistd.h>

#include "failing_memory.h"
#include "files.h"
#include "operation.h"

namespace {

constexpr int kTooManySleeps = 20;

int g_sleeps = 0;
int g_memory_returns_at = 0;
const char *g_wanted_file = nullptr;

}  // namespace

void memory_returns_at_sleep(int number, const char *file) {
    g_sleeps = 0;
    g_memory_returns_at = number;
    g_wanted_file = file;
}

// In the place of libc's: nothing waits.
extern "C" unsigned sleep(unsigned) {
    ++g_sleeps;
    if (g_sleeps == g_memory_returns_at)
        failing_memory::give_back();
    if (g_sleeps == kTooManySleeps)
        unlink(g_wanted_file);
    return 0;
}

std::string transfer_result(int result) {
    return result == 0                  ? "done"
           : result > 0 && result < 100 ? "libcurl's code"
                                        : std::to_string(result);
}

std::string content_of(const std::string &path) {
    return world::exists(path) ? "'" + world::read_file(path) + "'" : "none";
}

void without_file(const std::string &path) { unlink(path.c_str()); }

Operations all_operations() {
    Operations all;
    for (const auto &room :
         {log_operations(), state_operations(), digest_operations(), json_operations(),
          request_operations(), cloud_operations(), device_operations(), job_operations()})
        all.insert(all.end(), room.begin(), room.end());
    return all;
}
