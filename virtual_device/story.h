/* A run's story for a person. */
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

#include "virtual_device/device_run.h"

namespace world {

class Story {
  public:
    // Colours only on a terminal, and not when NO_COLOR is set.
    explicit Story(FILE *to);

    void open(const std::string &title, const std::string &about);
    // The console's text as it comes in; empty lines are left out.
    void console(std::string_view piece);
    // Everything else, after the run.
    void close(const Outcome &outcome, const std::string &note);
    void verdict(bool good, const std::string &text);

    bool coloured() const { return coloured_; }

  private:
    void heading(const char *text);
    void requests(const Outcome &outcome);
    void uploads(const Outcome &outcome);
    void files(const Outcome &outcome);
    std::string paint(const char *code, const std::string &text) const;

    FILE *const to_;
    const bool coloured_;
    std::string line_;  // of the console, so far
};

// 312345 -> "312,345"
std::string with_commas(uint64_t number);

}  // namespace world
