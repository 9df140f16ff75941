#include "testing/world_mounts.h"

#include <fcntl.h>
#include <ftw.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include "testing/files.h"
#include "testing/private_world.h"
#include "testing/shown_folders.h"

namespace fs = std::filesystem;

namespace world {
namespace {

constexpr const char *kHostEtc = "/run/world/host_etc";

[[noreturn]] void fail(const std::string &step) {
    throw std::system_error(errno, std::generic_category(), step);
}

void do_mount(const std::string &source, const std::string &target, const char *type,
              unsigned long flags, const char *data = nullptr) {
    // A bind mount has no type; valgrind complains about null.
    if (mount(source.c_str(), target.c_str(), type ? type : "", flags, data) != 0)
        fail("mount " + std::string(type ? type : source) + " on " + target);
}

void cover(const std::string &path, const char *mode) {
    do_mount("tmpfs", path, "tmpfs", MS_NOSUID, mode);
}

bool lies_under(const std::string &path, const std::string &folder) {
    return path.size() > folder.size() && path.compare(0, folder.size(), folder) == 0 &&
           path[folder.size()] == '/';
}

// A place of the machine held open, so that it can be bound after its path has been covered.
class Held {
  public:
    explicit Held(const std::string &path)
        : path_(path), fd_(open(path.c_str(), O_PATH | O_CLOEXEC)) {}
    Held(Held &&other) noexcept
        : path_(std::move(other.path_)), fd_(std::exchange(other.fd_, -1)) {}
    Held &operator=(Held &&) = delete;
    ~Held() {
        if (fd_ >= 0)
            close(fd_);
    }
    bool exists() const { return fd_ >= 0; }
    void bind_back() const { bind_to(path_); }
    void bind_to(const std::string &place) const {
        do_mount("/proc/self/fd/" + std::to_string(fd_), place, nullptr, MS_BIND | MS_REC);
    }
    const std::string &path() const { return path_; }

  private:
    std::string path_;
    int fd_;
};

// Covered by the world, without being a folder of the device or leading to one.
bool would_be_missed(const std::string &path) {
    constexpr const char *kCovered[] = {"/tmp", "/mnt", "/run", "/dev"};
    constexpr const char *kOwn[] = {"/tmp/app", "/mnt/data/iss_config", kDeviceDir, "/run/world"};
    return std::any_of(std::begin(kCovered), std::end(kCovered),
                       [&](const char *folder) { return lies_under(path, folder); }) &&
           std::none_of(std::begin(kOwn), std::end(kOwn), [&](const char *folder) {
               return path == folder || lies_under(path, folder) || lies_under(folder, path);
           });
}

struct HeldFolders {
    std::vector<Held> roots;  // shown at kShownDir0, kShownDir1...
    std::vector<ShownFolder> places;
};

// `own` are shown always, since their paths may hold blanks; the others when they would be missed.
HeldFolders hold_folders(const std::vector<std::string> &own,
                         const std::vector<std::string> &others) {
    HeldFolders held;
    const auto hold = [&](const std::string &path, bool always) {
        std::error_code missing;
        const std::string real = fs::canonical(inside(path), missing).string();
        if (missing || (!always && !would_be_missed(real)))
            return;
        const auto root =
            std::find_if(held.roots.begin(), held.roots.end(), [&](const Held &folder) {
                return real == folder.path() || lies_under(real, folder.path());
            });
        const auto number = root - held.roots.begin();
        if (root == held.roots.end())
            held.roots.emplace_back(real);
        const std::string place =
            kShownDir + std::to_string(number) +
            real.substr(held.roots[static_cast<size_t>(number)].path().size());
        held.places.push_back({path, place});
        held.places.push_back({real, place});
    };
    for (const std::string &path : own)
        hold(path, true);
    for (const std::string &path : others)
        hold(path, false);
    return held;
}

void show(const HeldFolders &folders) {
    int number = 0;
    for (const Held &folder : folders.roots) {
        const std::string place = kShownDir + std::to_string(number++);
        fs::create_directories(place);
        folder.bind_to(place);
    }
    record_shown_folders(folders.places);
}

void make_dev() {
    std::vector<Held> nodes;
    for (const char *name : {"null", "zero", "full", "random", "urandom", "tty", "ptmx", "pts"})
        nodes.emplace_back(std::string("/dev/") + name);
    cover("/dev", "mode=755");
    for (const Held &node : nodes) {
        if (!node.exists())
            continue;
        if (node.path() == "/dev/pts")
            fs::create_directory(node.path());
        else
            write_file(node.path(), "");
        node.bind_back();
    }
    for (const char *link : {"stdin 0", "stdout 1", "stderr 2"})
        fs::create_symlink("/proc/self/fd/" + std::string(std::strchr(link, ' ') + 1),
                           "/dev/" + std::string(link, std::strchr(link, ' ')));
    fs::create_symlink("/proc/self/fd", "/dev/fd");
    fs::create_directory("/dev/shm");
    fs::permissions("/dev/shm", fs::perms::all | fs::perms::sticky_bit);
    if (mkfifo("/dev/console", 0666) != 0)
        fail("mkfifo /dev/console");
}

// The new /etc shows every entry of the machine's, save those the world has its own of.
void make_etc(const Held &machines) {
    fs::create_directories(kHostEtc);
    machines.bind_to(kHostEtc);
    cover("/etc", "mode=755");
    const auto link_entries = [](const fs::path &from, const fs::path &to, const char *without) {
        std::error_code none;
        for (const fs::directory_entry &entry : fs::directory_iterator(from, none)) {
            if (entry.path().filename() == without)
                continue;
            if (entry.is_symlink())
                fs::copy_symlink(entry.path(), to / entry.path().filename());
            else
                fs::create_symlink(entry.path(), to / entry.path().filename());
        }
    };
    link_entries(kHostEtc, "/etc", "ssl");
    fs::create_directories("/etc/ssl/certs");
    link_entries(fs::path(kHostEtc) / "ssl", "/etc/ssl", "certs");
    for (const char *name : {"/etc/hosts", "/etc/resolv.conf", "/etc/nsswitch.conf"})
        fs::remove(name);
    write_file("/etc/resolv.conf", "nameserver 127.0.0.1\noptions timeout:1 attempts:1\n");
    write_file("/etc/nsswitch.conf", "passwd: files\ngroup: files\nhosts: files dns\n");
}

void make_stand_ins() {
    fs::create_directories(kStandInDir);
    const auto place = [](const std::string &name, const std::string &script) {
        const std::string path = std::string(kStandInDir) + "/" + name;
        write_file(path, script);
        fs::permissions(path, fs::perms(0755));
    };
    const std::string script = "#!/bin/sh\necho reboot >>" + std::string(kRebootRecord) + "\n";
    for (const char *name : {"reboot", "halt", "poweroff", "shutdown"})
        place(name, script);
    place("enter", "#!/bin/sh\ncd " + std::string(kDeviceDir) + "\nPATH=" + kStandInDir +
                       ":$PATH exec \"$@\"\n");
}

int remove_entry(const char *path, const struct stat *, int, struct FTW *place) {
    if (place->level > 0)
        (void)remove(path);
    return 0;
}

}  // namespace

void build_tree(const std::vector<std::string> &keep) {
    do_mount("none", "/", nullptr, MS_REC | MS_PRIVATE);
    do_mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC);
    const HeldFolders held = hold_folders({WORLD_SOURCE_DIR, WORLD_BINARY_DIR}, keep);
    const Held etc(exists(kHostEtc) ? kHostEtc
                                    : "/etc");  // the machine's, also from within a world
    make_dev();
    cover("/tmp", "mode=1777");
    cover("/mnt", "mode=755");
    cover("/run", "mode=755");
    show(held);
    make_etc(etc);
    make_stand_ins();
    seed_tree();
    write_file("/etc/hosts", "127.0.0.1 localhost\n");
}

void renew_tree() {
    do_mount("none", "/", nullptr, MS_REC | MS_PRIVATE);
    cover("/tmp", "mode=1777");
    cover("/mnt", "mode=755");
    cover(kDeviceDir, "mode=755");
    seed_tree();
}

void seed_tree() {
    fs::create_directories("/tmp/app/cloud_tmp");
    fs::create_directories("/mnt/data/iss_config/current_config");
    fs::create_directories(kDeviceDir);
}

void clear_directory(const std::string &path) {
    constexpr int kOpenFolders = 16;
    nftw(path.c_str(), remove_entry, kOpenFolders, FTW_DEPTH | FTW_MOUNT | FTW_PHYS);
}

}  // namespace world
