/* The files of a virtual device: as it is switched on, and as they are found. */
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace world {

// The files of a new device by path: settings, and each kind's dump.
std::map<std::string, std::string> seeded_files();

// One file as it was found.
struct FileState {
    uint64_t size = 0;
    std::string sha256;
    std::string content;  // of small ones
    std::string link;     // what a symbolic link points to, else empty
};

using FileTree = std::map<std::string, FileState>;

// Every file under the folders that the device's programs write to: /tmp, /mnt and the working
// directory.
FileTree look_at_files();

// The member names of an uncompressed tar archive, sorted; empty when it is none.
std::vector<std::string> tar_members(const std::string &path);

}  // namespace world
