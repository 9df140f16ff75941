/*
 * For the unit tests. Link `test_world`: it brings main(), which enters the private world
 * (private_world.h) before the first test, and a sleep() that only records (sleep_record.h).
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
 * of the code under test are the test's own affair.
 */
#pragma once

#include <gtest/gtest.h>

#include "console.h"
#include "files.h"
#include "private_world.h"
#include "sleep_record.h"

namespace world {

class WorldTest : public ::testing::Test {
  protected:
    WorldTest() {
        reset();
        clear_sleeps();
    }

    Console console;
};

}  // namespace world
