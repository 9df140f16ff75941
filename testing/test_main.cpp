/* main() of every unit-test program: the private world first, then the tests. */
#include <gtest/gtest.h>

#include <cstring>

#include "testing/private_world.h"

int main(int argc, char **argv) {
    bool only_lists = false;
    for (int i = 1; i < argc; ++i)
        only_lists = only_lists || std::strcmp(argv[i], "--gtest_list_tests") == 0;
    testing::InitGoogleTest(&argc, argv);
    if (!only_lists)
        world::enter();
    return RUN_ALL_TESTS();
}
