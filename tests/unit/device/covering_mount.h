// Something of the test's own in place of a file or folder of the system, while it lives.
#pragma once

#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

class CoveringMount {
  public:
    CoveringMount(const std::string &source, std::string target) : target_(std::move(target)) {
        if (mount(source.c_str(), target_.c_str(), "", MS_BIND, nullptr) != 0) {
            throw std::runtime_error("cannot cover " + target_);
        }
    }
    ~CoveringMount() { umount2(target_.c_str(), MNT_DETACH); }
    CoveringMount(const CoveringMount &) = delete;
    CoveringMount &operator=(const CoveringMount &) = delete;

  private:
    std::string target_;
};

// A socket's file: it is there and readable, and yet cannot be opened.
inline void make_unopenable_file(const std::string &path) {
    sockaddr_un name = {};
    name.sun_family = AF_UNIX;
    std::snprintf(name.sun_path, sizeof name.sun_path, "%s", path.c_str());
    const int handle = socket(AF_UNIX, SOCK_STREAM, 0);
    const int bound = bind(handle, reinterpret_cast<const sockaddr *>(&name), sizeof name);
    close(handle);
    if (bound != 0) {
        throw std::runtime_error("cannot make a socket at " + path);
    }
}
