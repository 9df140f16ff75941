// The real program on a virtual device in whose /tmp another user was first.
#pragma once

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"
#include "virtual_device/device_run.h"

inline constexpr uid_t kSomebodyElse = 1;
inline constexpr const char *kVictim = "/mnt/data/victim";
inline const std::string kVictimContent = "what nobody may overwrite";

class SharedTmp : public testing::Test {
  protected:
    SharedTmp() {
        world::reset();
        world::write_file(kVictim, kVictimContent);
    }

    static world::RunSetup setup() {
        world::RunSetup setup;
        setup.kdump = world::inside(KDUMP_PROGRAM);
        return setup;
    }

    // A device whose scenario has these fields.
    static world::DeviceRun device_with(const std::string &fields) {
        const std::string json = "{\"about\": \"a\"" + (fields.empty() ? "" : ", " + fields) + "}";
        return {world::read_scenario("shared-tmp", "shared-tmp.json", json), setup()};
    }

    // The outcome of one command on it, run after `prepare`.
    static world::Outcome run(
        const std::string &command, const std::string &fields = "",
        const std::function<void()> &prepare = [] {}) {
        world::DeviceRun device = device_with(fields);
        prepare();
        device.run(command);
        return device.outcome();
    }

    static void link_to_victim(const std::string &path) {
        unlink(path.c_str());
        std::filesystem::create_symlink(kVictim, path);
    }

    static std::string victim() { return world::read_file_if_any(kVictim); }

    // False where this user cannot act for another.
    static bool give_away(const std::string &path) {
        return lchown(path.c_str(), kSomebodyElse, kSomebodyElse) == 0;
    }

    static uid_t owner_of(const std::string &path) {
        struct stat status = {};
        return lstat(path.c_str(), &status) == 0 ? status.st_uid : kSomebodyElse;
    }

    static std::string stored(const world::Outcome &outcome) {
        return outcome.stored.empty() ? "nothing" : world::read_file(outcome.stored.front().path);
    }
};

#define NEEDS_ANOTHER_USER(given) \
    if (!(given))                 \
    GTEST_SKIP() << "only root can act for another user"
