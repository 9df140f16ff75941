// Looks at a firmware upload, and notes the signals that are sent.
#pragma once

#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include "device/firmware_upload_watch.h"
#include "testing/logged_test.h"
#include "upload_program.h"

class FirmwareWatchTest : public LoggedTest {
  protected:
    // Both files of an upload, its marker with this content; then a look at it.
    uint32_t watch(const std::string &marker) {
        world::write_file(kMarker, marker);
        world::write_file(kProgress, "50");
        console.clear();
        sent_signals.clear();
        calls::seen<kill>() = [this](int pid, int number) {
            sent_signals.push_back({pid, number});
        };
        if (refuses_signals) {
            calls::answer<kill>() = [](int, int) {
                errno = EPERM;
                return -1;
            };
        }
        const uint32_t result = SN_Check_FW_upload_status();
        calls::seen<kill>() = nullptr;
        calls::answer<kill>() = nullptr;
        return result;
    }

    std::vector<std::pair<int, int>> sent_signals;  // of the last watch()
    bool refuses_signals = false;                   // as kill() does for another user's process

    // Which of the two files are left.
    static std::string left() {
        return std::string(world::exists(kMarker) ? "marker " : "") +
               (world::exists(kProgress) ? "progress" : "");
    }

    static std::string marker_of(int pid, const std::string &before = "") {
        return before + "Uploading by data.cgi pid: " + std::to_string(pid) + "\n";
    }

    static constexpr const char *kMarker = "/tmp/Firmware_uploading.txt";
    static constexpr const char *kProgress = "/tmp/cgi/cgic_progress";
    static constexpr const char *kBoth = "marker progress";
};
