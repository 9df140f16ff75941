// What the tests of the firmware upload watch share.
#pragma once

#include "device/firmware_upload_watch.h"
#include "support/logged_test.h"
#include "upload_program.h"

class FirmwareWatchTest : public LoggedTest {
  protected:
    FirmwareWatchTest() {
        clear_sent_signals();
        refuse_signals(false);
    }

    // Both files of an upload, its marker with this content; then a look at it.
    uint32_t watch(const std::string &marker) {
        world::write_file(kMarker, marker);
        world::write_file(kProgress, "50");
        console.clear();
        return SN_Check_FW_upload_status();
    }

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
