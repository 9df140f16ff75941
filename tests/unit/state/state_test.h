// Fixture of the tests of the state files.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

#include "testing/logged_test.h"
#include "testing/named_row.h"
#include "testing/paths.h"

class StateTest : public LoggedTest {
  protected:
    void TearDown() override { EXPECT_EQ(logged(), "") << "no accessor logs"; }

    static void remove_state_folders() {
        std::filesystem::remove_all(kSettings);
        std::filesystem::remove_all("/tmp/app");
    }

    static bool state_folders_exist() {
        return world::exists(kSettings) || world::exists("/tmp/app");
    }

    // No file anywhere but this one.
    static bool only_file_is(const std::string &path) {
        std::vector<std::string> all = world::list_files("/mnt/data");
        const std::vector<std::string> status = world::list_files("/tmp/app");
        all.insert(all.end(), status.begin(), status.end());
        return all == std::vector<std::string>{path};
    }

    static bool no_files() {
        return world::list_files("/mnt/data").empty() && world::list_files("/tmp/app").empty();
    }

    static std::string folder_of(const std::string &path) {
        return std::filesystem::path(path).parent_path();
    }

    static std::string name_of(const std::string &path) {
        return std::filesystem::path(path).filename();
    }
};
