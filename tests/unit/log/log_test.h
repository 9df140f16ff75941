// A fixed time in UTC and a log file for the log tests.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "testing/logged_test.h"

inline const std::string kStamp = "[Mon Nov 16 06:57:51 2026]";
inline const std::string kLogFile = "/tmp/agent.log";

class LogTest : public LoggedTest {
  protected:
    LogTest() {
        setenv("TZ", "UTC0", 1);
        calls::answer<::time>() = [this](std::time_t *out) {
            ++clock_calls;
            if (out != nullptr) {
                *out = now;
            }
            return now;
        };
    }
    ~LogTest() override {
        calls::answer<::time>() = nullptr;
        unsetenv("TZ");
        tzset();
    }

    std::time_t now = 1794812271;  // what time() answers
    int clock_calls = 0;

    static void log_to_file(const std::string &path = kLogFile) {
        g_file_log = 1;
        std::snprintf(g_log_path, sizeof g_log_path, "%s", path.c_str());
    }

    // The report on standard output of a line that did not get into the file.
    static std::string report_for(const std::string &message) {
        return "str \"" + kStamp + message + "\" write to " + g_log_path + " fail";
    }
};
