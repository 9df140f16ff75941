#include "virtual_device/story.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <map>

#include "virtual_device/expected_text.h"

namespace world {
namespace {

constexpr const char *kBold = "1";
constexpr const char *kDim = "2";
constexpr const char *kRed = "31";
constexpr const char *kGreen = "32";
constexpr const char *kYellow = "33";

// As much as fits on a line of the terminal.
std::string cut(const std::string &text) {
    static const size_t width = [] {
        struct winsize size = {};
        const bool known = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col >= 60;
        return static_cast<size_t>(known ? size.ws_col : 120) - 4;
    }();
    return text.size() <= width ? text : text.substr(0, width - 3) + "...";
}

std::string trimmed(const std::string &text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

std::string short_url(const Exchange &exchange) {
    constexpr size_t kLongest = 84;
    const std::string url = legible(exchange.url);
    return url.size() <= kLongest ? url : url.substr(0, kLongest - 3) + "...";
}

std::string result_of(const Exchange &exchange) {
    std::string text = exchange.status ? std::to_string(exchange.status) : "";
    if (!exchange.mishap.empty())
        text += (text.empty() ? "" : ", ") + exchange.mishap;
    return text.empty() ? "not answered" : text;
}

// The path of the file that was stored; null when there is none.
const std::string *twin_of(const FileTree &tree, const StoredObject &object) {
    for (const auto &[path, file] : tree)
        if (file.sha256 == object.sha256 && file.size == object.size)
            return &path;
    return nullptr;
}

}  // namespace

std::string with_commas(uint64_t number) {
    std::string text = std::to_string(number);
    for (size_t at = text.size(); at > 3; at -= 3)
        text.insert(at - 3, ",");
    return text;
}

Story::Story(FILE *to)
    : to_(to),
      coloured_(isatty(fileno(to)) && (!std::getenv("NO_COLOR") || !*std::getenv("NO_COLOR"))) {}

std::string Story::paint(const char *code, const std::string &text) const {
    return coloured_ ? fmt::format("\x1b[{}m{}\x1b[0m", code, text) : text;
}

void Story::heading(const char *text) { fmt::print(to_, "\n{}\n", paint(kBold, text)); }

void Story::open(const std::string &title, const std::string &about) {
    fmt::print(to_, "{}", paint(kBold, "On the virtual device: " + legible(title)) + "\n");
    if (!about.empty())
        fmt::print(to_, "{}\n", about);
    heading("The device's console (empty lines left out)");
    std::fflush(to_);
}

void Story::console(std::string_view piece) {
    line_ += piece;
    for (size_t end = 0; (end = line_.find('\n')) != std::string::npos; line_.erase(0, end + 1)) {
        const std::string line = cut(legible(trimmed(line_.substr(0, end))));
        if (!without_stamps(line).empty())
            fmt::print(to_, "  {}\n", paint(kDim, line));
    }
    std::fflush(to_);
}

void Story::requests(const Outcome &outcome) {
    heading("Requests, in order");
    const size_t digits = std::to_string(outcome.exchanges.size()).size();
    size_t width = 0;
    for (const Exchange &exchange : outcome.exchanges)
        width = std::max(width, short_url(exchange).size());
    for (size_t i = 0; i < outcome.exchanges.size(); ++i) {
        const Exchange &exchange = outcome.exchanges[i];
        const bool good = exchange.status == 200 && exchange.mishap.empty();
        fmt::print(to_, "  {:>{}}. {:<5} {:<{}}  {}  {}\n", i + 1, digits, exchange.method,
                   short_url(exchange), width, paint(good ? kGreen : kYellow, result_of(exchange)),
                   exchange.body_size ? with_commas(exchange.body_size) + " bytes sent"
                                      : with_commas(exchange.reply_size) + " bytes received");
    }
    if (outcome.exchanges.empty())
        fmt::print(to_, "  none\n");
    for (const std::string &target : outcome.proxied)
        fmt::print(to_, "  through the proxy: CONNECT {}\n", target);
    for (const std::string &name : outcome.dns_queries)
        fmt::print(to_, "  asked of the pinned DNS server: {}\n", name);
}

void Story::uploads(const Outcome &outcome) {
    if (outcome.stored.empty()) {
        heading("The upload");
        fmt::print(to_, "  nothing was stored by the cloud\n");
    }
    for (const StoredObject &object : outcome.stored) {
        const std::string *source = twin_of(outcome.before, object);
        const size_t members = tar_members(object.path).size();
        heading(("The upload of " + (source ? *source : legible(object.name))).c_str());
        if (source != nullptr)
            fmt::print(to_, "  on the device  SHA-256 {}\n", outcome.before.at(*source).sha256);
        fmt::print(to_, "  in the cloud   SHA-256 {}, {} bytes: {}\n", object.sha256,
                   with_commas(object.size),
                   source != nullptr ? paint(kGreen, "equal")
                   : members > 0     ? fmt::format("an archive of {} entries", members)
                                     : paint(kYellow, "not a file of the device"));
    }
}

void Story::files(const Outcome &outcome) {
    heading("Files on the device");
    size_t same = 0;
    for (const auto &[path, file] : outcome.before) {
        const auto now = outcome.after.find(path);
        if (now == outcome.after.end())
            fmt::print(to_, "  removed {}\n", path);
        else if (now->second.sha256 != file.sha256)
            fmt::print(to_, "  changed {}\n", path);
        else
            ++same;
    }
    for (const auto &[path, file] : outcome.after)
        if (outcome.before.find(path) == outcome.before.end())
            fmt::print(to_, "  new     {}, {} bytes\n", legible(path), with_commas(file.size));
    fmt::print(to_, "  {} others as before\n", same);
}

void Story::close(const Outcome &outcome, const std::string &note) {
    if (!line_.empty())
        console("\n");
    requests(outcome);
    uploads(outcome);
    files(outcome);
    std::map<unsigned, int> waits;
    for (const unsigned seconds : outcome.sleeps)
        ++waits[seconds];
    for (const auto &[seconds, times] : waits)
        fmt::print(to_, "\n  waits of {} s, passed over: {}\n", seconds, times);
    if (outcome.reboots > 0)
        fmt::print(to_, "\n  reboots asked for: {}\n", outcome.reboots);
    for (const CommandResult &command : outcome.commands) {
        if (!command.output.empty())
            fmt::print(to_, "\n{}", command.output);
        if (command.exit_status > 128)
            fmt::print(to_, "\n  stopped by signal {} ({})\n", command.exit_status - 128,
                       strsignal(command.exit_status - 128));
        else if (command.exit_status != 0)
            fmt::print(to_, "\n{}", command.errors);
    }
    if (!note.empty())
        fmt::print(to_, "\n{}\n", note);
}

void Story::verdict(bool good, const std::string &text) {
    fmt::print(to_, "\n{}\n", paint(good ? kGreen : kRed, text));
}

}  // namespace world
