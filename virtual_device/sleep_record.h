/*
 * In a test program that links this library, sleep() records its argument and returns at once.
 * (Programs started by a test use sleep_stand_in.c instead.)
 */
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace world {

// The seconds asked for, call by call, since the last clear.
std::vector<unsigned> sleeps();

// Forgets the calls and the action.
void clear_sleeps();

// Runs `action` inside every later sleep() with the number of calls so far, so that a test can
// change the outside world between two attempts.
void on_sleep(std::function<void(size_t)> action);

}  // namespace world
