#include "testing/console.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <regex>
#include <string_view>
#include <system_error>

namespace world {

Console::Console(std::function<void(std::string_view)> arrived)
    : arrived_(std::move(arrived)),
      fifo_(open("/dev/console", O_RDWR | O_NONBLOCK | O_CLOEXEC)),
      stop_(eventfd(0, EFD_CLOEXEC)) {
    if (fifo_ < 0 || stop_ < 0)
        throw std::system_error(errno, std::generic_category(), "/dev/console");
    collector_ = std::thread(&Console::collect, this);
}

Console::~Console() {
    const uint64_t one = 1;
    (void)!write(stop_, &one, sizeof one);
    collector_.join();
    take();
    close(fifo_);
    close(stop_);
}

void Console::collect() {
    struct pollfd watched[] = {{fifo_, POLLIN, 0}, {stop_, POLLIN, 0}};
    while (poll(watched, 2, -1) >= 0 || errno == EINTR) {
        if (watched[1].revents != 0)
            return;
        take();
    }
}

void Console::take() {
    const std::lock_guard<std::mutex> lock(guard_);
    char piece[4096];
    for (ssize_t got = 0; (got = read(fifo_, piece, sizeof piece)) > 0;) {
        const std::string_view fresh(piece, static_cast<size_t>(got));
        text_.append(fresh);
        if (arrived_)
            arrived_(fresh);
    }
}

std::string Console::text() {
    take();
    const std::lock_guard<std::mutex> lock(guard_);
    return text_;
}

std::string Console::text_without_stamps() { return without_stamps(text()); }

void Console::clear() {
    take();
    const std::lock_guard<std::mutex> lock(guard_);
    text_.clear();
}

std::string without_stamps(const std::string &text) {
    static const std::regex stamp(
        R"(\[[A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9][0-9] [0-9]{2}:[0-9]{2}:[0-9]{2} [0-9]{4}\])");
    return std::regex_replace(text, stamp, "");
}

}  // namespace world
