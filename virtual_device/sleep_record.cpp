#include "sleep_record.h"

#include <mutex>

namespace {

std::mutex g_guard;
std::vector<unsigned> g_sleeps;
std::function<void(size_t)> g_action;

}  // namespace

extern "C" unsigned sleep(unsigned seconds) {
    std::function<void(size_t)> action;
    size_t count = 0;
    {
        const std::lock_guard<std::mutex> lock(g_guard);
        g_sleeps.push_back(seconds);
        count = g_sleeps.size();
        action = g_action;
    }
    if (action)
        action(count);
    return 0;
}

namespace world {

std::vector<unsigned> sleeps() {
    const std::lock_guard<std::mutex> lock(g_guard);
    return g_sleeps;
}

void clear_sleeps() {
    const std::lock_guard<std::mutex> lock(g_guard);
    g_sleeps.clear();
    g_action = nullptr;
}

void on_sleep(std::function<void(size_t)> action) {
    const std::lock_guard<std::mutex> lock(g_guard);
    g_action = std::move(action);
}

}  // namespace world
