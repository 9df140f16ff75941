// Any content of /proc/meminfo, compared with a second, plain reader.
// Input: the content.
#include <fcntl.h>
#include <sys/mount.h>

#include <algorithm>
#include <cctype>
#include <climits>

#include "device/system_status.h"
#include "fuzz.h"

namespace {

constexpr const char *kReport = "/run/world/meminfo";

int report = -1;

// Saturates at the largest unsigned long.
uint32_t number_in(std::string_view text) {
    const auto is_digit = [](unsigned char c) { return std::isdigit(c) != 0; };
    unsigned long number = 0;
    for (auto at = std::find_if(text.begin(), text.end(), is_digit);
         at != text.end() && is_digit(static_cast<unsigned char>(*at)); ++at) {
        const unsigned long digit = static_cast<unsigned long>(*at - '0');
        number = number > (ULONG_MAX - digit) / 10 ? ULONG_MAX : number * 10 + digit;
        if (number == ULONG_MAX) {
            break;
        }
    }
    return static_cast<uint32_t>(number);
}

void take_line(std::string_view line, MemInfo &info) {
    line = line.substr(0, line.find('\0'));
    const auto behind = [&](std::string_view label) {
        const std::size_t at = line.find(label);
        return at == std::string_view::npos ? 0 : number_in(line.substr(at + label.size()));
    };
    if (fuzz::contains(line, "MemTotal:")) {
        info.total_kb = behind("MemTotal:");
    } else if (fuzz::contains(line, "MemFree:")) {
        info.used_kb = info.total_kb - behind("MemFree:");
    } else {
        info.buffers_cached_kb +=
            fuzz::contains(line, "Buffers:") ? behind("Buffers:") : behind("Cached:");
    }
}

MemInfo read_plainly(std::string_view content, MemInfo info) {
    constexpr std::size_t kLongestLine = 255;
    while (!content.empty()) {
        const std::size_t length = std::min(content.find('\n'), content.size() - 1) + 1;
        const std::size_t piece = std::min(length, kLongestLine);
        take_line(content.substr(0, piece), info);
        content.remove_prefix(piece);
    }
    return info;
}

void begin() {
    report = open(kReport, O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    REQUIRE(mount(kReport, "/proc/meminfo", "", MS_BIND, nullptr) == 0);
}

void try_input(fuzz::Input input) {
    const std::string_view content = input.rest();
    fuzz::write_descriptor(report, content);
    const MemInfo before = {1, 2, 3};
    MemInfo info = before;
    REQUIRE(sn_get_mem_info(&info) == 1);
    const MemInfo expected = read_plainly(content, before);
    REQUIRE(info.total_kb == expected.total_kb && info.used_kb == expected.used_kb);
    REQUIRE(info.buffers_cached_kb == expected.buffers_cached_kb);
}

}  // namespace

const fuzz::Target fuzz::target = {try_input, begin};
