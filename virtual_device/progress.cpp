#include "virtual_device/progress.h"

#include <fmt/format.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace world {

Progress::Progress(const ExchangeRecord &record) : record_(record) {
    if (isatty(STDERR_FILENO))
        watcher_ = std::thread(&Progress::watch, this);
}

Progress::~Progress() {
    done_ = true;
    if (watcher_.joinable())
        watcher_.join();
}

void Progress::watch() const {
    bool shown = false;
    while (!done_) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const std::vector<Exchange> exchanges = record_.all();
        const bool busy =
            !exchanges.empty() && exchanges.back().body_size > 0 && exchanges.back().ended <= 0;
        if (busy)
            fmt::print(stderr, "\r  the cloud has {} MiB ", exchanges.back().body_size >> 20);
        else if (shown)
            fmt::print(stderr, "\r{:30}\r", "");
        shown = busy;
    }
}

}  // namespace world
