#include "kdump/turn_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "log/log.h"

int g_turn_held = 0;

namespace {

constexpr const char *kClaim = "api_get_cloudwtpflag";

// Not through somebody else's link: what is claimed and emptied is a file of /tmp, not where they
// like.
int open_turn_file() noexcept {
    constexpr const char *kPath = "/tmp/cloudwtpflag";
    constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC;
    const int opened = open(kPath, kFlags | O_NOFOLLOW, 0644);
    struct stat found = {};
    if (opened < 0 && errno == ELOOP && lstat(kPath, &found) == 0 && found.st_uid == geteuid()) {
        return open(kPath, kFlags, 0644);
    }
    return opened;
}

// The turn file, open and locked; closing it gives the lock back.
class TurnFile {
  public:
    TurnFile() noexcept : descriptor_(open_turn_file()) {}
    ~TurnFile() {
        if (locked_) {
            flock(descriptor_, LOCK_UN);
        }
        if (descriptor_ > 0) {
            close(descriptor_);
        }
    }
    TurnFile(const TurnFile &) = delete;
    TurnFile &operator=(const TurnFile &) = delete;

    // A failed opening is negative and shows up as a failed lock; only 0 counts as not opened.
    bool opened() const noexcept { return descriptor_ != 0; }
    bool lock() noexcept { return locked_ = flock(descriptor_, LOCK_EX) == 0; }
    int descriptor() const noexcept { return descriptor_; }

  private:
    int descriptor_;
    bool locked_ = false;
};

int grant(int site) noexcept {
    g_turn_held = 1;
    cloud_log("api_get_cloudwtpflag OK %d\n\n", site);
    return 0;
}

}  // namespace

int api_get_cloudwtpflag() noexcept {
    TurnFile file;
    if (!file.opened()) {
        cloud_log("api_get_cloudwtpflag fd == NULL\n\n");
        return -1;
    }
    if (!file.lock()) {
        cloud_log("api_get_cloudwtpflag flock failed\n\n");
        return -1;
    }
    constexpr std::size_t kMostRead = 128;
    char word[kMostRead + 1] = "";
    if (read(file.descriptor(), word, kMostRead) == 0) {
        [[maybe_unused]] const ssize_t written = write(file.descriptor(), "cloud", 5);
        return grant(499);
    }
    if (std::strcmp(word, "cloud") == 0) {
        return grant(504);
    }
    if (std::strcmp(word, "zorbcon") == 0) {
        return grant(510);
    }
    cloud_log("api_get_cloudwtpflag not my turn, buf \"%s\" func %s line %d\n\n", word, kClaim,
              516);
    return -1;
}

int api_release_cloudwtpflag() noexcept {
    TurnFile file;
    if (!file.opened() || !file.lock()) {
        return -1;
    }
    [[maybe_unused]] const int truncated = ftruncate(file.descriptor(), 0);
    g_turn_held = 0;
    return 0;
}
