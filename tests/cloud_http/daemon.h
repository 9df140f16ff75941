/* A server program of the machine, run inside the world for as long as the object lives. */
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

class Daemon {
  public:
    // Starts the command and waits until somebody listens on 127.0.0.1:tcp_port. When that does not
    // happen within some seconds, started() is false.
    Daemon(const std::vector<std::string> &command, uint16_t tcp_port);
    ~Daemon();
    Daemon(const Daemon &) = delete;
    Daemon &operator=(const Daemon &) = delete;

    bool started() const { return started_; }

  private:
    pid_t process_;
    bool started_;
};
