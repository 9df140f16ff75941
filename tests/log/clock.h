// The log tests stand in for time(), to know what a line must say.
#pragma once

#include <ctime>

namespace test_clock {

extern std::time_t now;  // what time() answers
extern int calls;        // how often it was asked

}  // namespace test_clock
