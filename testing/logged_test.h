// A private world with console logging switched on.
#pragma once

#include <gmock/gmock.h>

#include <string>

#include "log/log.h"
#include "testing/world_test.h"

class LoggedTest : public world::WorldTest {
  protected:
    LoggedTest() { g_console_debug = 1; }
    ~LoggedTest() override {
        g_console_debug = 0;
        g_file_log = 0;
        g_log_path[0] = '\0';
    }

    // The log since the last call, without time stamps.
    std::string logged() {
        std::string lines = console.text_without_stamps();
        console.clear();
        return lines;
    }
};
