// The words of the rows, and all rooms' rows in one table.
#include <unistd.h>

#include <algorithm>

#include "operation.h"
#include "testing/calls.h"
#include "testing/failing_memory.h"
#include "testing/files.h"

namespace {

constexpr int kTooManySleeps = 20;

int g_sleeps = 0;
int g_memory_returns_at = 0;
const char *g_wanted_file = nullptr;

}  // namespace

// Nothing waits.
void memory_returns_at_sleep(int number, const char *file) {
    calls::answer<::sleep>() = [](unsigned) {
        ++g_sleeps;
        if (g_sleeps == g_memory_returns_at)
            memory_give_back();
        if (g_sleeps == kTooManySleeps)
            unlink(g_wanted_file);
        return 0;
    };
    g_sleeps = 0;
    g_memory_returns_at = number;
    g_wanted_file = file;
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

Operation alone(const std::string &name, std::function<void()> prepare, std::function<void()> call,
                std::function<std::string()> outcome, std::vector<std::string> allowed,
                bool may_end_by_assertion) {
    const std::size_t comma = std::min(name.find(", "), name.size());
    return {name.substr(0, comma), comma < name.size() ? name.substr(comma + 2) : "",
            Reach::kAlone,         std::move(prepare),
            std::move(call),       std::move(outcome),
            std::move(allowed),    may_end_by_assertion};
}

Operation networked(const std::string &name, std::function<void()> prepare,
                    std::function<void()> call, std::function<std::string()> outcome,
                    std::vector<std::string> allowed) {
    Operation row =
        alone(name, std::move(prepare), std::move(call), std::move(outcome), std::move(allowed));
    row.reach = Reach::kNetwork;
    return row;
}

Operation networked_from_cold(const std::string &name, std::function<void()> prepare,
                              std::function<void()> call, std::function<std::string()> outcome,
                              std::vector<std::string> allowed) {
    Operation row =
        alone(name, std::move(prepare), std::move(call), std::move(outcome), std::move(allowed));
    row.reach = Reach::kNetworkFromCold;
    return row;
}

Operations joined(const std::vector<Operations> &tables) {
    Operations all;
    for (const Operations &table : tables) {
        all.insert(all.end(), table.begin(), table.end());
    }
    return all;
}

Operations all_operations() {
    return joined({log_operations(), state_operations(), digest_operations(), json_operations(),
                   request_operations(), cloud_operations(), device_operations(),
                   job_operations()});
}
