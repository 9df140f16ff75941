// Records which files of a folder are opened, and how they are closed.
#pragma once

#include <sys/inotify.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

class OpenWatch {
  public:
    explicit OpenWatch(const std::string &folder)
        : queue_(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
        constexpr uint32_t kEvents = IN_OPEN | IN_CLOSE | IN_CREATE | IN_DELETE | IN_MOVE;
        if (inotify_add_watch(queue_, folder.c_str(), kEvents) < 0) {
            throw std::runtime_error("cannot watch " + folder);
        }
    }
    ~OpenWatch() { close(queue_); }
    OpenWatch(const OpenWatch &) = delete;
    OpenWatch &operator=(const OpenWatch &) = delete;

    // In order, for example "open seqno_file", "read seqno_file": the second is the closing of a
    // file that was opened for reading.
    std::vector<std::string> seen() const {
        std::vector<std::string> all;
        alignas(inotify_event) char events[4096];
        for (ssize_t got = 0; (got = read(queue_, events, sizeof events)) > 0;) {
            for (const char *at = events; at < events + got;) {
                const auto *event = reinterpret_cast<const inotify_event *>(at);
                all.push_back(word(event->mask) + (event->len > 0 ? event->name : "."));
                at += sizeof *event + event->len;
            }
        }
        return all;
    }

  private:
    static std::string word(uint32_t mask) {
        return (mask & IN_OPEN) != 0            ? "open "
               : (mask & IN_CLOSE_NOWRITE) != 0 ? "read "
               : (mask & IN_CLOSE_WRITE) != 0   ? "written "
               : (mask & IN_CREATE) != 0        ? "create "
               : (mask & IN_DELETE) != 0        ? "remove "
                                                : "move ";
    }

    int queue_;
};
