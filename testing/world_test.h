/*
 * For the unit tests. Link `test_world`: it brings main(), which enters the private world
 * (private_world.h) before the first test, and calls that tests can watch and answer (calls.h).
 *
 *   class LogTest : public world::WorldTest {};
 *
 *   TEST_F(LogTest, WritesOneLine) {
 *       world::ScriptedServer server;                       // 127.0.0.1:8000, scripted_server.h
 *       server.on("/api/system/status", {world::json_reply("{}")});
 *       g_console_debug = 1;
 *       cloud_log("hello\n");
 *       EXPECT_EQ(console.text_without_stamps(), "hello\n");
 *   }
 *
 * Each test starts with an empty /tmp, /mnt/data/... and working directory (/run/device), no
 * recorded sleeps or reboots, no further host names, and an empty console. Process-wide variables
 * of the code under test are left to the test.
 */
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <vector>

#include "testing/calls.h"
#include "testing/console.h"
#include "testing/files.h"
#include "testing/private_world.h"

namespace world {

class WorldTest : public ::testing::Test {
  protected:
    WorldTest() {
        reset();
        calls::answer<::sleep>() = [this](unsigned seconds) {
            sleeps.push_back(seconds);
            if (on_sleep) {
                on_sleep(sleeps.size());
            }
            return 0;
        };
    }
    ~WorldTest() override { calls::answer<::sleep>() = nullptr; }

    // Nothing sleeps: the seconds asked for, and an action that gets the number of calls so far, so
    // that a test can change the outside world between two attempts.
    std::vector<unsigned> sleeps;
    std::function<void(size_t)> on_sleep;

    Console console;
};

}  // namespace world
