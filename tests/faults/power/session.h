/*
 * One session on the machine whose disk records every write: all kinds, with settings written
 * beside. A place in it is the length of that record.
 */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace power {

constexpr const char *kDiskLog = "/run/world/power.log";
constexpr const char *kFirstDisk = "/run/world/power.log.start";

// A dump, or what a later round puts at its place.
struct DumpVersion {
    std::string path;
    std::string content;
    uint64_t kept_from = 0;        // on the disk, whatever happens
    uint64_t stored = UINT64_MAX;  // the cloud has it
};

// A call that sets a value, from before its start to after its return.
struct Setting {
    std::string path;
    std::string text;
    uint64_t from = 0;
    uint64_t to = 0;
};

struct Session {
    std::vector<DumpVersion> dumps;
    std::vector<Setting> settings;  // of each path in their order
};

Session record_session(const std::string &kdump, const std::string &state_writer, int rounds);

}  // namespace power
