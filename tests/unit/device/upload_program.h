// A real process for the firmware upload watch to look at.
#pragma once

#include <string>

#include "testing/spawn.h"

class UploadProgram {
  public:
    enum class State { sleeping, running, stopped, ended };

    // Returns once /proc shows that name and state. An ended one is not yet collected.
    explicit UploadProgram(const std::string &name = "data.cgi", State state = State::sleeping);
    ~UploadProgram();
    UploadProgram(const UploadProgram &) = delete;
    UploadProgram &operator=(const UploadProgram &) = delete;

    int pid() const { return pid_; }

    // Waits for its end, which must come from signal 9.
    bool was_killed();

    // Ends it and collects it: its id is free from now on.
    void end();

  private:
    void await(const std::string &name, char state) const;

    world::Child child_;
    const int pid_;
};
