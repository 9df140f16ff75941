// Programs started at the same moment, which meet once more at their marker (meeting_point.c).
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <vector>

#include "testing/spawn.h"

class Runners {
  public:
    // Processes that wait to become these commands.
    explicit Runners(const std::vector<std::vector<std::string>> &commands);
    void start();

    // Waits until `count` have ended in all, or the time is over; how many have.
    std::size_t wait_for(std::size_t count);

    // How many ended otherwise than with exit status 0.
    std::size_t failed() const { return failed_; }

  private:
    int gate_;
    std::list<world::Child> running_;
    std::size_t ended_ = 0;
    std::size_t failed_ = 0;
};
