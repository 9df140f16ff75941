#include "clock.h"

namespace test_clock {

std::time_t now = 0;
int calls = 0;

}  // namespace test_clock

extern "C" std::time_t time(std::time_t *out) noexcept {
    ++test_clock::calls;
    if (out != nullptr) {
        *out = test_clock::now;
    }
    return test_clock::now;
}
