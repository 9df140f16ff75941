#include "accessors.h"
#include "state_test.h"
#include "testing/open_watch.h"

namespace {

class TextSetters : public StateTest, public testing::WithParamInterface<TextSetter> {
  protected:
    static uint32_t set(const std::string &value) { return GetParam().set(value.c_str()); }
    static std::string content() { return world::read_file(GetParam().path); }
};

TEST_P(TextSetters, WritesTheTextAndNothingElse) {
    for (const char *text : {"word", "a longer text", "x", "", "two\nlines\n", "100%d%s%n", " "}) {
        EXPECT_EQ(set(text), 0u);
        EXPECT_EQ(content(), text);
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(TextSetters, OpensItsFileOnceForWriting) {
    world::write_file(GetParam().path, "before");
    const OpenWatch opened(folder_of(GetParam().path));
    set("word");
    const std::string name = name_of(GetParam().path);
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open " + name, "written " + name));
}

TEST_P(TextSetters, CutsAt255Characters) {
    for (const size_t length : {254u, 255u, 256u, 257u, 10000u}) {
        EXPECT_EQ(set(std::string(length, 'w')), 0u);
        EXPECT_EQ(content(), std::string(std::min(length, size_t{255}), 'w'));
    }
}

TEST_P(TextSetters, MissingFolderIsNotCreated) {
    remove_state_folders();
    EXPECT_EQ(set("word"), GetParam().refused);
    EXPECT_FALSE(state_folders_exist());
}

TEST_P(TextSetters, FileThatCannotBeOpened) {
    std::filesystem::create_directories(GetParam().path);
    EXPECT_EQ(set("word"), GetParam().refused);
}

TEST_P(TextSetters, NullTextLeavesTheFileAlone) {
    world::write_file(GetParam().path, "before");
    EXPECT_EQ(GetParam().set(nullptr), GetParam().refused);
    EXPECT_EQ(content(), "before");
}

INSTANTIATE_TEST_SUITE_P(StateFiles, TextSetters, testing::ValuesIn(text_setters()), RowName());

class NumberSetters : public StateTest, public testing::WithParamInterface<NumberSetter> {};

TEST_P(NumberSetters, WriteTheDigitsAndNothingElse) {
    world::write_file(GetParam().path, "a longer content than any number has");
    for (const int64_t value : GetParam().values) {
        EXPECT_EQ(GetParam().set(value), 0u);
        EXPECT_EQ(world::read_file(GetParam().path), std::to_string(value));
    }
    EXPECT_TRUE(only_file_is(GetParam().path));
}

TEST_P(NumberSetters, OpenTheirFileOnceForWriting) {
    world::write_file(GetParam().path, "1");
    const OpenWatch opened(folder_of(GetParam().path));
    GetParam().set(2);
    const std::string name = name_of(GetParam().path);
    EXPECT_THAT(opened.seen(), testing::ElementsAre("open " + name, "written " + name));
}

TEST_P(NumberSetters, MissingFolderIsNotCreated) {
    remove_state_folders();
    EXPECT_EQ(GetParam().set(5), 1u);
    EXPECT_FALSE(state_folders_exist());
}

INSTANTIATE_TEST_SUITE_P(StateFiles, NumberSetters, testing::ValuesIn(number_setters()), RowName());

}  // namespace
