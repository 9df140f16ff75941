#include "tests/faults/device.h"

#include <algorithm>
#include <filesystem>

#include "testing/device_files.h"
#include "testing/files.h"
#include "testing/private_world.h"

namespace reliability {
namespace {

using world::Dump;
using world::Kind;

// Several pages and two TLS records, so that it takes more than one call to read and to send it.
constexpr size_t kLongDump = 20000;
constexpr size_t kShortDump = 500;  // of the other kinds
constexpr const char *kFolders[] = {"/tmp", "/mnt", world::kDeviceDir};

bool sends(const Kind &kind, const std::string &path) {
    return std::any_of(kind.dumps.begin(), kind.dumps.end(),
                       [&](const Dump &dump) { return dump.source == path; });
}

Files fresh_device(const Kind &kind) {
    Files files;
    for (const char *name : {"CRT", "KEY"}) {
        const std::string path = std::string(world::kDeviceDir) + "/" + name;
        files[path] = world::read_file(path);
    }
    for (auto &[path, content] : world::seeded_files())
        files[path] = content.substr(0, sends(kind, path) ? kLongDump : kShortDump);
    if (kind.reboots)
        files["/tmp/upgrade_finish"] = "";
    return files;
}

}  // namespace

const Files &fresh_files(const Kind &kind) {
    static std::map<std::string, Files> known;
    const auto found = known.find(kind.name);
    return found != known.end() ? found->second : known[kind.name] = fresh_device(kind);
}

Files look() {
    Files files;
    for (const char *folder : kFolders)
        for (const std::string &path : world::list_files(folder))
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
