#include "testing/console.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace world {
namespace {

// A: upper-case letter, a: lower-case letter, 9: digit, _: digit or blank.
constexpr std::string_view kStampShape = "[Aaa Aaa _9 99:99:99 9999]";

bool fits(char c, char shape) {
    const int code = static_cast<unsigned char>(c);
    switch (shape) {
        case 'A':
            return std::isupper(code) != 0;
        case 'a':
            return std::islower(code) != 0;
        case '9':
            return std::isdigit(code) != 0;
        case '_':
            return c == ' ' || std::isdigit(code) != 0;
        default:
            return c == shape;
    }
}

bool begins_with_stamp(std::string_view text) {
    return text.size() >= kStampShape.size() &&
           std::equal(kStampShape.begin(), kStampShape.end(), text.begin(),
                      [](char shape, char c) { return fits(c, shape); });
}

}  // namespace

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

std::string without_stamps(std::string_view text) {
    std::string rest;
    rest.reserve(text.size());
    for (size_t at = 0; at < text.size();) {
        if (begins_with_stamp(text.substr(at))) {
            at += kStampShape.size();
            continue;
        }
        rest += text[at++];
    }
    return rest;
}

}  // namespace world
