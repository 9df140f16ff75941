// A real process for the firmware upload watch to look at, and a record of the signals it sends.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

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

    pid_t pid_;
};

// What the code under test has sent with kill() since the last clear: process id and signal.
std::vector<std::pair<int, int>> sent_signals();
void clear_sent_signals();

// Makes kill() fail, as it does for another user's process.
void refuse_signals(bool refuse);
