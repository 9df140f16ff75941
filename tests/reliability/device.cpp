#include "device.h"

#include <algorithm>
#include <filesystem>

#include "device_files.h"
#include "files.h"
#include "private_world.h"

namespace reliability {
namespace {

// Several pages and two TLS records, so that it takes more than one call to read and to send it.
constexpr size_t kLongestDump = 20000;
constexpr const char *kFolders[] = {"/tmp", "/mnt", "/etc", world::kDeviceDir};

Files fresh_device() {
    Files files = look();
    for (auto &[path, content] : world::seeded_files())
        files[path] = content.substr(0, std::min(content.size(), kLongestDump));
    return files;
}

}  // namespace

const Files &fresh_files(const Kind &kind) {
    static const Files plain = fresh_device();
    static const Files upgraded = [] {
        Files files = plain;
        files["/tmp/upgrade_finish"] = "";
        return files;
    }();
    return kind.reboots ? upgraded : plain;
}

Files look() {
    Files files;
    for (const char *folder : kFolders)
        for (const std::string &path : world::list_files(folder))
            if (!std::filesystem::is_symlink(path))
                files[path] = world::read_file_if_any(path);
    return files;
}

void restore(const Files &present, const Files &wanted) {
    for (const auto &[path, content] : present)
        if (wanted.count(path) == 0)
            std::filesystem::remove(path);
    for (const auto &[path, content] : wanted) {
        const auto found = present.find(path);
        if (found == present.end() || found->second != content)
            world::write_file(path, content);
    }
}

}  // namespace reliability
