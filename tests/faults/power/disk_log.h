/* The writes that reached a disk, as qemu's driver blklogwrites records them. */
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace power {

struct DiskWrite {
    uint64_t length = 0;   // of the log with this write
    uint64_t place = 0;    // on the disk, in bytes
    std::string data;      // empty for a mere flush
    bool flushes = false;  // earlier writes can no longer be lost
};

std::vector<DiskWrite> read_disk_log(const std::string &path);

}  // namespace power
