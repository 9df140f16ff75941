// Programs started at the same moment, which meet once more at their marker (meeting_point.c).
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

class Runners {
  public:
    // Processes that wait to become these commands.
    explicit Runners(const std::vector<std::vector<std::string>> &commands);
    ~Runners();  // ends what still runs
    Runners(const Runners &) = delete;
    Runners &operator=(const Runners &) = delete;

    void start();

    // Waits until `count` have ended in all, or the time is over; how many have.
    std::size_t wait_for(std::size_t count);

    // How many ended otherwise than with exit status 0.
    std::size_t failed() const { return failed_; }

  private:
    int gate_;
    std::vector<pid_t> running_;
    std::size_t ended_ = 0;
    std::size_t failed_ = 0;
};
