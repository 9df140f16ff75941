#include "disk_log.h"

#include <cstring>

#include "testing/files.h"

namespace power {
namespace {

constexpr size_t kSector = 512;
constexpr uint64_t kFlush = 1;

struct Entry {
    uint64_t sector, sectors, flags, unused;
};

}  // namespace

std::vector<DiskWrite> read_disk_log(const std::string &path) {
    const std::string log = world::read_file(path);
    std::vector<DiskWrite> writes;
    for (size_t at = kSector; at + kSector <= log.size();) {  // behind the log's own header
        Entry entry;
        std::memcpy(&entry, log.data() + at, sizeof entry);
        if (entry.sectors == 0 && entry.flags == 0) {
            break;
        }
        DiskWrite write;
        write.place = entry.sector * kSector;
        write.flushes = (entry.flags & kFlush) != 0;
        write.data = log.substr(at + kSector, entry.sectors * kSector);
        at += kSector + entry.sectors * kSector;
        write.length = at;
        writes.push_back(std::move(write));
    }
    return writes;
}

}  // namespace power
