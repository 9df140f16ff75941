// What the log tests share: a fixed time in UTC, and a log file.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "clock.h"
#include "tests/support/logged_test.h"

inline const std::string kStamp = "[Mon Nov 16 06:57:51 2026]";
inline const std::string kLogFile = "/tmp/agent.log";

class LogTest : public LoggedTest {
  protected:
    LogTest() {
        setenv("TZ", "UTC0", 1);
        test_clock::now = 1794812271;
        test_clock::calls = 0;
    }
    ~LogTest() override {
        unsetenv("TZ");
        tzset();
    }

    static void log_to_file(const std::string &path = kLogFile) {
        g_file_log = 1;
        std::snprintf(g_log_path, sizeof g_log_path, "%s", path.c_str());
    }

    // What standard output says about a line that did not get into the file.
    static std::string report_for(const std::string &message) {
        return "str \"" + kStamp + message + "\" write to " + g_log_path + " fail";
    }
};
