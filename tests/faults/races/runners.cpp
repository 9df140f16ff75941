#include "runners.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <stdexcept>
#include <thread>

#include "testing/files.h"

namespace {

constexpr std::chrono::seconds kPatience{15};
constexpr std::chrono::microseconds kBetweenLooks{300};
constexpr const char *kMeetingPoint = "/run/world/meeting";

}  // namespace

Runners::Runners(const std::vector<std::vector<std::string>> &commands) {
    int gate[2];
    if (pipe2(gate, O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    const uint32_t come_and_expected[] = {0, static_cast<uint32_t>(commands.size())};
    world::write_file(kMeetingPoint, {reinterpret_cast<const char *>(come_and_expected),
                                      sizeof come_and_expected});
    const auto wait_for_start = [gate] {
        char nothing;
        close(gate[1]);
        if (read(gate[0], &nothing, 1) < 0)  // 0 when the gate opens
            _exit(126);
    };
    for (const auto &words : commands)
        running_.push_back(world::spawn(world::Command(words)
                                            .set("MEETING_POINT", kMeetingPoint)
                                            .set("LD_PRELOAD", MEETING_POINT_LIBRARY)
                                            .set("ASAN_OPTIONS", "verify_asan_link_order=0")
                                            .quiet()
                                            .before(wait_for_start)));
    close(gate[0]);
    gate_ = gate[1];
}

void Runners::start() { close(gate_); }

std::size_t Runners::wait_for(std::size_t count) {
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while (ended_ < count && std::chrono::steady_clock::now() < end) {
        running_.remove_if([this](world::Child &child) {
            const auto finished = child.poll();
            ended_ += finished.has_value();
            failed_ += finished && finished->status != 0;
            return finished.has_value();
        });
        std::this_thread::sleep_for(kBetweenLooks);
    }
    return ended_;
}
