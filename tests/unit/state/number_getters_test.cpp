#include "accessors.h"
#include "state_test.h"
#include "testing/open_watch.h"

namespace {

class NumberGetters : public StateTest, public testing::WithParamInterface<NumberGetter> {
  protected:
    // Calls the getter on a variable that holds `value` and checks its result.
    static uint32_t get(uint32_t value) {
        const uint32_t result = GetParam().get(&value);
        EXPECT_EQ(result, GetParam().returns_value ? value : 0);
        return value;
    }
};

TEST_P(NumberGetters, ReadsOneNumber) {
    for (const Reading &reading : GetParam().readings) {
        world::write_file(GetParam().path, reading.content);
        EXPECT_EQ(get(1234567), reading.value) << reading.content;
        EXPECT_EQ(world::read_file(GetParam().path), reading.content) << "not rewritten";
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(NumberGetters, OpensItsFileOnceForReading) {
    world::write_file(GetParam().path, "1");
    const OpenWatch opened(folder_of(GetParam().path));
    get(0);
    const std::string name = name_of(GetParam().path);
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open " + name, "read " + name));
}

TEST_P(NumberGetters, HasADefaultForAMissingFile) {
    EXPECT_EQ(get(1234567), GetParam().missing);
    if (GetParam().creates_file) {
        EXPECT_TRUE(only_file_is(GetParam().path));
        EXPECT_EQ(world::read_file(GetParam().path), "1");
        EXPECT_EQ(get(0), 1u) << "read back";
    } else {
        EXPECT_TRUE(no_files());
    }
}

TEST_P(NumberGetters, HasTheSameDefaultForAMissingFolder) {
    remove_state_folders();
    EXPECT_EQ(get(1234567), GetParam().missing);
    EXPECT_FALSE(state_folders_exist());
}

TEST_P(NumberGetters, KeepsTheCallersValueWhenNothingIsReadable) {
    for (const char *content : {"", "on", " \n", "-", ".5"}) {
        world::write_file(GetParam().path, content);
        for (const uint32_t value : {0u, 1u}) {
            EXPECT_EQ(get(value), value) << '"' << content << '"';
        }
        EXPECT_EQ(world::read_file(GetParam().path), content);
    }
}

TEST_P(NumberGetters, NullPointer) {
    for (const bool exists : {true, false}) {
        world::reset();
        if (exists) {
            world::write_file(GetParam().path, "1");
        }
        const OpenWatch opened(folder_of(GetParam().path));
        EXPECT_EQ(GetParam().get(nullptr), GetParam().null_result);
        if (GetParam().null_result != 0) {
            EXPECT_THAT(opened.seen(), testing::IsEmpty());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(StateFiles, NumberGetters, testing::ValuesIn(number_getters()), RowName());

class NormalisingGetters : public StateTest {};

// Whatever the variable held before, only the values of the setting leave these getters.
TEST_F(NormalisingGetters, NormaliseAnUnreadableFileToo) {
    for (const NumberGetter &getter : number_getters()) {
        const bool normalises = getter.path.compare(0, kSettings.size(), kSettings) == 0;
        world::write_file(getter.path, "x");
        uint32_t value = 99;
        getter.get(&value);
        EXPECT_EQ(value, !normalises                            ? 99u
                         : getter.name == "api_cloud_debug_get" ? 0u
                                                                : 1u)
            << getter.name;
    }
}

}  // namespace
